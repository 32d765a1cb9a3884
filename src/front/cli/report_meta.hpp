#pragma once
// What a call did, as the meta attributes of the images the command line
// writes: the fields of the call's info (the one description every front end
// shows) that say how the image was made, under the names info gives them
// ("adaptive.steps" for info.adaptive.steps), with the same text.

#include "io/image_writer.hpp"
#include "recon/info_value.hpp"

// method, combination, noise_source, noise_sigma (per coil, the data's
// units), adaptive.applied_to, adaptive.steps (the noise weights that acted)
// and adaptive.sigma; numbers with 9 significant digits, one value each.
ImageMeta report_meta(const InfoValue& info);
