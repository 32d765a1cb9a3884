function text = size_text(x)
%SIZE_TEXT  The size of X as messages print it, e.g. '16x12x8'.
  text = strrep(regexprep(mat2str(size(x)), '[\[\]]', ''), ' ', 'x');
end
