// Every mix walk, templated on the arithmetic vocabulary.
#pragma once

#include "mix/interlaced.hpp"
#include "mix/progressive.hpp"
#include "mix/yv12.hpp"
