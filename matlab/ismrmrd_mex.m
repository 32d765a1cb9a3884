%ISMRMRD_MEX  The raw-data reader behind READ_ISMRMRD_KSPACE (MEX).
%
%   [KSPACE, ACQ] = ISMRMRD_MEX(FILE, REMOVE_OVERSAMPLING)
%     FILE is the name of an ISMRMRD file (text), REMOVE_OVERSAMPLING a
%     logical scalar. Returns new arrays; nothing is changed in place.
%     Call READ_ISMRMRD_KSPACE instead: it validates the options and documents
%     KSPACE and ACQ.
%
%   Errors carry the identifier homodyne:badFile (the file), homodyne:usage
%   (the arguments) or homodyne:noMemory; warnings about the file carry
%   homodyne:badFile.
%
%   Build it with BUILD_HOMODYNE_MEX (needs libismrmrd-dev, libfftw3-dev and
%   libpng-dev).
%
%   See also READ_ISMRMRD_KSPACE, BUILD_HOMODYNE_MEX.
