function same = same_value(a, b)
%SAME_VALUE  Same class, size, sparsity, complexity and values (NaN equal to NaN).
  same = strcmp(class(a), class(b)) && isequal(size(a), size(b)) && issparse(a) == issparse(b) ...
         && iscomplex(a) == iscomplex(b);
  if same && isa(a, 'function_handle')
    same = strcmp(func2str(a), func2str(b));
  elseif same
    same = isequaln(a, b);
  end
end
