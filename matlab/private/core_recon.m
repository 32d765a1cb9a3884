function [img, phase, zero_filled, info, sensitivities] = core_recon(wrapper, kspace, scale, ranges, labels, options, layout, outputs)
%CORE_RECON  HOMODYNE_RECON through the reconstruction core (homodyne_recon_mex).
%   [IMG, PHASE, ZERO_FILLED, INFO, SENSITIVITIES] = CORE_RECON(WRAPPER,
%   KSPACE, SCALE, RANGES, LABELS, OPTIONS, LAYOUT, OUTPUTS) reconstructs
%   KSPACE (checked by CHECKED_ARRAY, which found its SCALE, and already in
%   the core's order x, y, z, coils, volumes as LAYOUT from COIL_LAYOUT says) with the sampled RANGES (1x3
%   cell, LABELS naming each in messages) and OPTIONS (homodyne_recon's
%   options). The data reach the core at unit scale (see WORKING_COPY) and
%   the results come back at the caller's scale, class and layout (size 1
%   along the coils when they are combined). OUTPUTS is the caller's nargout:
%   PHASE, ZERO_FILLED (the root sum of squares of the coils' zero-filled
%   images) and SENSITIVITIES (complex, KSPACE's layout; [] unless the coils
%   are combined adaptively) are computed only when asked for. The ranges
%   are checked by PLAN_AXES, the option values by the core; errors reach the
%   user in WRAPPER's name.
  started = tic;
  [phase, zero_filled, sensitivities] = deal([]);
  least_fraction = 0.55 * strcmp(options.Method, 'homodyne');   % POCS weights nothing
  plan = plan_axes(wrapper, ranges, labels, layout.canonical(1:3), least_fraction);
  core = rmfield(options, {'Coils', 'Dims', 'NoiseCovariance'});
  core.Ranges = plan.ranges;
  if isempty(options.Coils)
    core.CoilCombine = 'none';   % further dimensions are volumes
  end
  work = working_copy(kspace, scale);
  core.NoiseCovariance = noise_reference(options, layout, scale);
  back = @(x) ipermute(reshape(x, layout.result), layout.perm);
  results = cell(1, 2 + (outputs > 1) + (outputs > 4));
  [results{:}] = homodyne_recon_mex('reconstruct', work, core);
  clear work;
  img = back(restored(wrapper, 'IMG', results{1}, scale, class(kspace), strcmp(options.Output, 'complex')));
  if outputs > 1
    phase = back(cast(results{3}, class(kspace)));
  end
  if outputs > 2
    zero_filled = sqrt(sum(abs(centred_ifft3(kspace / scale)) .^ 2, 4));
    zero_filled = back(restored(wrapper, 'ZERO_FILLED', zero_filled, scale, class(kspace), false));
  end
  if outputs > 4 && ~isempty(results{4})
    sensitivities = ipermute(reshape(cast(results{4}, class(kspace)), layout.permuted), layout.perm);
  end
  info = results{2};
  info = struct('ranges', {plan.ranges}, 'method', info.method, 'constraint', {info.constraint}, ...
                'iterations', info.iterations, 'change', info.change, 'residual', info.residual, ...
                'echo_offset', info.echo_offset, 'threads', info.threads, 'combination', info.combination, ...
                'noise_source', info.noise_source, 'noise_sigma', info.noise_sigma * scale, ...
                'adaptive', info.adaptive, 'seconds', struct('total', toc(started)));
  info.adaptive.sigma = info.adaptive.sigma * scale;
end

% The 'NoiseCovariance' option for the core, at the data's unit scale: a
% matrix as it is (over scale^2), a noise scan (more than two dimensions)
% with its coils along the fourth dimension and its other samples pooled.
function reference = noise_reference(options, layout, scale)
  reference = options.NoiseCovariance;
  if isempty(reference)
    return;
  end
  if ndims(reference) == 2 && (~isempty(options.Coils) || isscalar(reference))
    reference = reference / scale ^ 2;
    return;
  end
  if isempty(options.Coils)
    reference = reshape(reference, [numel(reference), 1, 1, 1]);
  else
    coils = options.Coils;
    nd = max(ndims(reference), coils);
    reference = permute(reference, [setdiff(1:nd, coils), coils]);
    sizes = [size(reference), ones(1, nd)];
    reference = reshape(reference, [prod(sizes(1:nd - 1)), 1, 1, sizes(nd)]);
  end
  reference = reference / scale;
end
