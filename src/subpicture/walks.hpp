// Every sub-picture preparation and colour-key walk, templated on the arithmetic vocabulary.
#pragma once

#include "subpicture/alpha.hpp"
#include "subpicture/ayuy2_to_rgb.hpp"
#include "subpicture/color_key.hpp"
#include "subpicture/rgb_to_ayuy2.hpp"
