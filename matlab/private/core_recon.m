function [img, phase, zero_filled, info] = core_recon(kspace, ranges, options, outputs)
%CORE_RECON  HOMODYNE_RECON through the reconstruction core (homodyne_recon_mex).
%   [IMG, PHASE, ZERO_FILLED, INFO] = CORE_RECON(KSPACE, RANGES, OPTIONS, OUTPUTS)
%   reconstructs KSPACE (validated, any class HOMODYNE_RECON takes) with the
%   sampled RANGES (1x3 cell) and OPTIONS (struct of the core's options:
%   Method, Output, Iterations, ...). OUTPUTS is the caller's nargout: PHASE
%   (the phase estimate the method used) and ZERO_FILLED are computed only
%   when asked for. Errors of the core are raised with their
%   homodyne:... identifier and the prefix 'homodyne_recon: '.
  started = tic;
  phase = [];
  zero_filled = [];
  options.Ranges = ranges;
  try
    if outputs > 1
      [img, core, phase] = homodyne_recon_mex('reconstruct', single(kspace), options);
      phase = cast(phase, class(kspace));
    else
      [img, core] = homodyne_recon_mex('reconstruct', single(kspace), options);
    end
  catch err
    message = regexprep(err.message, '^homodyne_recon_mex: ', '');
    error(err.identifier, 'homodyne_recon: %s', message);
  end
  img = cast(img, class(kspace));
  if outputs > 2
    zero_filled = abs(centred_ifft3(kspace));
  end
  info = struct('ranges', {ranges}, 'method', core.method, 'constraint', {core.constraint}, ...
                'iterations', core.iterations, 'change', core.change, 'residual', core.residual, ...
                'echo_offset', core.echo_offset, 'threads', core.threads, 'seconds', struct('total', toc(started)));
end
