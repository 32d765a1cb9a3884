function require_module(wrapper)
%REQUIRE_MODULE  Refuse a call of WRAPPER when the MEX module homodyne_mex is not built.
%   Without the built module only its help file homodyne_mex.m is found, and
%   calling it would fail with the host's "invalid call to script".
  if exist('homodyne_mex') ~= 3 %#ok<EXIST>
    homodyne_error(wrapper, 'noModule', ['the MEX module homodyne_mex is not built: run ' ...
                   '"make mex" in the repository root, or build_homodyne_mex in Octave or MATLAB.']);
  end
end
