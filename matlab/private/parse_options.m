function options = parse_options(wrapper, table, args)
%PARSE_OPTIONS  Name/value options of WRAPPER, read against its option table.
%   OPTIONS = PARSE_OPTIONS(WRAPPER, TABLE, ARGS): TABLE has one row per
%   option: name, default, validator (true for a valid value), and what a
%   valid value is, for the message. ARGS are the name/value pairs of the
%   call; names match without regard to case, and a later pair wins. OPTIONS
%   is a struct with a field per option, named as in TABLE.
  names = table(:, 1)';
  options = cell2struct(table(:, 2), names, 1);
  if mod(numel(args), 2) ~= 0
    homodyne_error(wrapper, 'usage', 'options come as name/value pairs; the options are %s.', strjoin(names, ', '));
  end
  for k = 1:2:numel(args)
    name = args{k};
    row = [];
    if ischar(name) && isrow(name)
      row = find(strcmpi(name, names), 1);
    end
    if isempty(row) && ischar(name)
      homodyne_error(wrapper, 'badOption', 'unknown option ''%s''; the options are %s.', name, strjoin(names, ', '));
    elseif isempty(row)
      homodyne_error(wrapper, 'usage', 'argument %d must be an option name; the options are %s.', k + 1, strjoin(names, ', '));
    end
    if ~table{row, 3}(args{k + 1})
      homodyne_error(wrapper, 'badOption', '''%s'' must be %s.', names{row}, table{row, 4});
    end
    options.(names{row}) = args{k + 1};
  end
end
