// Every frame-loading walk, templated on the arithmetic vocabulary.
#pragma once

#include "load/planar_to_yuy2.hpp"
#include "load/planar_to_yv12.hpp"
#include "load/to_rgb.hpp"
#include "load/yuy2_to_yuy2.hpp"
