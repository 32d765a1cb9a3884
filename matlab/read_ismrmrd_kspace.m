function [kspace, acq] = read_ismrmrd_kspace(file, varargin)
%READ_ISMRMRD_KSPACE  Centred k-space and acquisition facts from an ISMRMRD raw-data file.
%
%   [KSPACE, ACQ] = READ_ISMRMRD_KSPACE(FILE)
%   [KSPACE, ACQ] = READ_ISMRMRD_KSPACE(FILE, 'RemoveOversampling', TF)
%
%   FILE is an ISMRMRD file (HDF5 with the dataset group "dataset"), as vendor
%   converters write it. The readouts of its first encoding space, which must
%   be Cartesian, are sorted by their encoding counters into KSPACE:
%
%     dimension  1 x (readout)   2 y (kspace_encode_step_1)   3 z (step 2)
%                4 coil          5 slice   6 contrast   7 phase   8 repetition
%                9 set          10 average
%
%   KSPACE is complex single and centred as HOMODYNE_RECON expects it: k = 0
%   sits at index floor(n/2)+1 of the first three dimensions. Along y and z a
%   line's position is its counter minus the centre of the header's encoding
%   limits; along x a sample's position is its index minus the readout's
%   center_sample (a partial echo leaves the rest of the readout zero).
%   Unacquired lines are zero. Noise-only readouts, navigators, phase
%   correction and dummy readouts are not part of KSPACE.
%
%   'RemoveOversampling' (default true): where the header's reconstruction
%   space has fewer readout samples than its encoded space, each readout is
%   cut to the reconstruction field of view by a centred DFT crop (inverse
%   DFT, keep the central samples, DFT), which keeps the k-space values of an
%   object inside that field of view. false keeps the readouts as stored.
%
%   ACQ is a struct:
%     ranges          {kx, ky, kz}: [] for a fully sampled axis or [first last]
%                     in k coordinates, as HOMODYNE_RECON's 'Ranges' takes them;
%                     from the encoding limits and center_sample, checked
%                     against the readouts (see below)
%     noise           the noise-only readouts, samples x coils (complex
%                     single), for prewhitening; [] if the file has none
%     noise_variance_scale  the noise variance in KSPACE is the variance of
%                     NOISE times this (dwell-time ratio, and the bandwidth
%                     kept when oversampling was removed)
%     matrix, fov     size of the first three dimensions of KSPACE and their
%                     field of view in mm
%     coils           number of receive channels
%     dimensions      names of the dimensions of KSPACE, 1x10 cell
%     volume_sizes    sizes of dimensions 5 to 10
%     encoded_matrix, recon_matrix  the header's encoded and reconstruction
%                     matrix sizes
%     oversampling_removed, sample_time_us, measurement_uid
%     warnings        the warnings given while reading (also shown)
%     header          the file's XML header
%
%   Files that contradict their header are refused with an error naming the
%   field or readout at fault, before anything of the header's sizes is
%   allocated: readouts that reach neither end of the encoded readout axis
%   (a header matrix wider than its readouts; a partial echo leaves out one
%   end only) or do not fit it, a counter (kspace_encode_step_1/2, slice,
%   contrast, phase, repetition, set, average) outside the header's encoding
%   limits or the matrix, a readout whose discard_pre and discard_post leave
%   no sample, readouts of different lengths, lines missing inside the
%   sampled block (gaps, as in undersampled scans), a declared k-space centre
%   that the data contradict (the energy peak elsewhere with more than four
%   times the energy at the declared centre), and a k-space that would take
%   more than half the machine's memory. Encoding limits wider than the lines
%   actually acquired give a warning, and the acquired block is used.
%   Samples in discard_pre and discard_post are left out (zero). Readouts
%   that repeat the counters of an earlier one are averaged with it, with a
%   warning. Noise readouts of another channel count, or with no sample
%   kept, are left out with a warning naming them.
%
%   Every fault of the file (missing, not HDF5, no ISMRMRD dataset, truncated,
%   contradictions, no readouts) raises an error with identifier
%   homodyne:badFile, its message 'read_ismrmrd_kspace: FILE: fault'. Wrong
%   arguments and options raise homodyne:usage and homodyne:badOption, as in
%   every function of the toolbox (see HOMODYNE_RECON).
%
%   Example:
%     system('ismrmrd_generate_cartesian_shepp_logan -m 128 -c 4 -C -o sl.h5');
%     [kspace, acq] = read_ismrmrd_kspace('sl.h5');
%     img = homodyne_recon(kspace, acq);   % its ranges, coils (combined), noise scan
%
%   See also HOMODYNE_RECON.

  wrapper = 'read_ismrmrd_kspace';
  if nargin < 1 || ~ischar(file) || ~isrow(file)
    homodyne_error(wrapper, 'usage', ['usage: [KSPACE, ACQ] = read_ismrmrd_kspace(FILE, ...): FILE must be ' ...
                   'a file name (text); see help read_ismrmrd_kspace.']);
  end
  remove = true;   % the reader's one option
  if ~isempty(varargin)
    if numel(varargin) ~= 2 || ~ischar(varargin{1}) || ~strcmpi(varargin{1}, 'RemoveOversampling')
      homodyne_error(wrapper, 'badOption', 'unknown option or arguments; the only option is ''RemoveOversampling''.');
    end
    remove = varargin{2};
    if ~(isscalar(remove) && (islogical(remove) || (isnumeric(remove) && any(remove == [0 1]))))
      homodyne_error(wrapper, 'badOption', '''RemoveOversampling'' must be true or false.');
    end
  end
  try
    [kspace, acq] = ismrmrd_mex(file, logical(remove));
  catch err
    homodyne_error(wrapper, err);   % homodyne:badFile and the others keep their identifiers
  end
end
