// Calls inside and outside the contract of the load kernels.
#include "checked/checked_support.hpp"

namespace dispconv::test {

std::vector<CheckedCall> load_contract_calls() { return {}; }

std::vector<BadCall> load_bad_calls() { return {}; }

}  // namespace dispconv::test
