function path = test_data_file(name)
%TEST_DATA_FILE  Path of a file NAME in the folder for generated test data
%   (HOMODYNE_TEST_DATA, made if missing).
  folder = getenv('HOMODYNE_TEST_DATA');
  if ~exist(folder, 'dir')
    mkdir(folder);
  end
  path = fullfile(folder, name);
end
