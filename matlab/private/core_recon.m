function [img, phase, zero_filled, info] = core_recon(wrapper, kspace, scale, ranges, labels, options, outputs)
%CORE_RECON  HOMODYNE_RECON through the reconstruction core (homodyne_recon_mex).
%   [IMG, PHASE, ZERO_FILLED, INFO] = CORE_RECON(WRAPPER, KSPACE, SCALE,
%   RANGES, LABELS, OPTIONS, OUTPUTS) reconstructs KSPACE (checked by
%   CHECKED_ARRAY, which found its SCALE)
%   with the sampled RANGES (1x3 cell, LABELS naming each in messages) and
%   OPTIONS (struct of the core's options: Method, Output, Iterations, ...).
%   The data reach the core at unit scale (see WORKING_COPY) and the results
%   come back at the caller's scale and class. OUTPUTS is the caller's
%   nargout: PHASE (the phase estimate the method used) and ZERO_FILLED are
%   computed only when asked for. The ranges are checked by PLAN_AXES, the
%   option values by the core; errors reach the user in WRAPPER's name.
  started = tic;
  [phase, zero_filled] = deal([]);
  least_fraction = 0.55 * strcmp(options.Method, 'homodyne');   % POCS weights nothing
  plan = plan_axes(wrapper, ranges, labels, [size(kspace, 1), size(kspace, 2), size(kspace, 3)], least_fraction);
  options.Ranges = plan.ranges;
  work = working_copy(kspace, scale);
  if outputs > 1
    [img, core, phase] = homodyne_recon_mex('reconstruct', work, options);
    phase = cast(phase, class(kspace));
  else
    [img, core] = homodyne_recon_mex('reconstruct', work, options);
  end
  clear work;
  img = restored(wrapper, 'IMG', img, scale, class(kspace), strcmp(options.Output, 'complex'));
  if outputs > 2
    zero_filled = restored(wrapper, 'ZERO_FILLED', abs(centred_ifft3(kspace / scale)), scale, class(kspace), false);
  end
  info = struct('ranges', {plan.ranges}, 'method', core.method, 'constraint', {core.constraint}, ...
                'iterations', core.iterations, 'change', core.change, 'residual', core.residual, ...
                'echo_offset', core.echo_offset, 'threads', core.threads, 'seconds', struct('total', toc(started)));
end
