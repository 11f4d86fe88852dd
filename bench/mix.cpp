// The mix jobs.
#include "bench.hpp"

namespace bench {

void register_mix(int, int) {}

}  // namespace bench
