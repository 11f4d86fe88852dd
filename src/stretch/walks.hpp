// Every stretch walk, templated on the arithmetic vocabulary.
#pragma once

#include "stretch/edge_directed.hpp"
#include "stretch/planar_1x2.hpp"
#include "stretch/planar_1x2_rgb.hpp"
#include "stretch/planar_2x2.hpp"
#include "stretch/plane.hpp"
#include "stretch/yuy2_2x2.hpp"
