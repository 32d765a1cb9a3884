function cases = test_command_line()
%TEST_COMMAND_LINE  The command line homodyne-recon and the Octave path give
%   the same images of the same raw-data file.
  % The programs run without a sanitizer runtime that the test host may
  % have preloaded.
  unsetenv('LD_PRELOAD');
  cases = {
    'same_images_as_octave_from_the_file', @same_images_as_octave_from_the_file
    'same_image_from_a_cfl_file', @same_image_from_a_cfl_file
  };
end

function output = run(command)
  [status, output] = system(command);
  assert(status == 0, '%s failed: %s', command, output);
end

% The meta attributes of the command line's images (DUMP_IMAGES prints them,
% a line each, name and values separated by tabs) say what INFO says.
function assert_meta_is_info(dumped, info, t)
  meta = containers.Map();
  for line = strsplit(strtrim(dumped), "\n")
    parts = strsplit(line{1}, "\t");
    meta(parts{1}) = parts(2:end);
  end
  texts = {'method', info.method; 'combination', info.combination; 'noise_source', info.noise_source; ...
           'adaptive.applied_to', info.adaptive.applied_to; 'adaptive.steps', info.adaptive.steps};
  for f = 1:size(texts, 1)
    assert(strcmp(meta(texts{f, 1}){1}, texts{f, 2}), 'case %d: %s is %s in the file, %s in info', t, ...
           texts{f, 1}, meta(texts{f, 1}){1}, texts{f, 2});
  end
  numbers = {'noise_sigma', info.noise_sigma; 'adaptive.sigma', info.adaptive.sigma};
  for f = 1:size(numbers, 1)
    expected = double(numbers{f, 2}(:));
    got = [];
    if isKey(meta, numbers{f, 1})
      got = str2double(meta(numbers{f, 1}))(:);
    end
    assert(numel(got) == numel(expected) && all(abs(got - expected) <= 1e-6 * abs(expected)), ...
           'case %d: %s differs between the file and info', t, numbers{f, 1});
  end
end

% Two coils, two volumes, ky and kz partial at opposite ends, noise readouts:
% read_ismrmrd_kspace then homodyne_recon, beside homodyne-recon on the same
% file: one-pass homodyne from the acquisition struct (prewhitened with the
% noise readouts, the noise-adaptive step), its coils combined adaptively
% and by root sum of squares, one per coil without noise steps, and the
% default options but a fixed count of POCS iterations and a fixed
% constraint. The same core gives the same image bit for bit: one-pass plans
% its transforms without timing them, so both processes round alike; POCS's
% timed plans may differ between processes by rounding, which could stop
% them an iteration apart or tip the automatic constraint's trial. The
% images' meta attributes carry what info says about the method and noise.
function same_images_as_octave_from_the_file(~)
  sizes = [24 20 8];
  image = homodyne_phantom(sizes);
  [x, y] = ndgrid(linspace(-1, 1, sizes(1)), linspace(-1, 1, sizes(2)));
  kspace = zeros([sizes 2 2], 'single');
  for c = 1:2
    for v = 1:2
      sensitivity = exp(-(x - cos(c)).^2 - (y - sin(c)).^2 + 1i * (c + v) * x);
      kspace(:, :, :, c, v) = fftshift(fftn(ifftshift(image .* sensitivity)));
    end
  end
  raw = test_data_file('cli_kspace.raw');
  fid = fopen(raw, 'w');
  fwrite(fid, [real(kspace(:)), imag(kspace(:))].', 'float32');
  fclose(fid);
  file = test_data_file('cli_scan.h5');
  run(sprintf('"%s" "%s" --kspace "%s" 24 20 8 2 2 --keep-y -10 5 --keep-z -3 3 --noise 16', ...
              getenv('HOMODYNE_MAKE_SCAN_FILE'), file, raw));
  [k, acq] = read_ismrmrd_kspace(file);
  table = {
    {acq, 'Method', 'homodyne', 'Output', 'magnitude'}, '--method homodyne --output magnitude', [24 20 8 1 2], 0
    {acq, 'Method', 'homodyne', 'Output', 'magnitude', 'CoilCombine', 'rss'}, ...
    '--method homodyne --output magnitude --coil-combine rss', [24 20 8 1 2], 0
    {'Ranges', acq.ranges, 'Method', 'homodyne', 'NoiseAdaptive', false}, ...
    '--method homodyne --coil-combine none --noise-adaptive off --no-prewhitening', [24 20 8 2 2], 0
    {acq, 'Tolerance', 0, 'Constraint', 'magnitude'}, '--tolerance 0 --constraint magnitude', [24 20 8 1 2], 1e-5
  };
  for t = 1:size(table, 1)
    [expected, ~, ~, info] = homodyne_recon(k, table{t, 1}{:});
    images = test_data_file('cli_images.h5');
    run(sprintf('"%s" --quiet %s "%s" "%s"', getenv('HOMODYNE_RECON_PROGRAM'), table{t, 2}, file, images));
    assert_meta_is_info(run(sprintf('"%s" "%s" "%s"', getenv('HOMODYNE_DUMP_IMAGES'), images, raw)), info, t);
    fid = fopen(raw, 'r');
    got = fread(fid, Inf, 'float32=>single');
    fclose(fid);
    assert(numel(got) == prod(table{t, 3}), 'case %d: %d values', t, numel(got));
    difference = max(abs(got - expected(:))) / max(abs(expected(:)));
    assert(difference <= table{t, 4}, 'case %d: the images differ by %g of the largest value', t, difference);
  end
end

% A 32 x 10 phantom acquired from ky = 0 (the k = 0 plane weighted as every
% plane whose mirror was measured) as BART's .cfl: the command line's image
% equals homodyne_recon's bit for bit, with the default options and for
% one-pass homodyne.
function same_image_from_a_cfl_file(~)
  [~, k] = homodyne_phantom([32 10]);
  k(:, 1:5) = 0;
  name = test_data_file('cli_phantom');
  write_cfl(name, k);
  for options = {{'Method', 'homodyne'}, {'Method', 'homodyne', 'Output', 'complex'}}
    images = test_data_file('cli_phantom_images');
    flags = sprintf('--%s %s ', options{1}{:});
    run(sprintf('"%s" --quiet %s "%s.cfl" "%s.cfl"', getenv('HOMODYNE_RECON_PROGRAM'), lower(flags), name, images));
    expected = homodyne_recon(k, options{1}{:});
    got = read_cfl(images);
    assert(isequal(size(got), size(expected)) && isequal(got(:), complex(expected(:))), '%s', flags);
  end
end

function write_cfl(name, x)
  fid = fopen([name '.hdr'], 'w');
  fprintf(fid, '# Dimensions\n%s\n', sprintf('%d ', size(x)));
  fclose(fid);
  fid = fopen([name '.cfl'], 'w');
  fwrite(fid, [real(x(:)), imag(x(:))].', 'float32');
  fclose(fid);
end

function x = read_cfl(name)
  fid = fopen([name '.hdr'], 'r');
  fgetl(fid);
  sizes = sscanf(fgetl(fid), '%d')';
  fclose(fid);
  fid = fopen([name '.cfl'], 'r');
  pairs = fread(fid, [2 Inf], 'float32=>single');
  fclose(fid);
  x = reshape(complex(pairs(1, :), pairs(2, :)), [sizes 1]);
end
