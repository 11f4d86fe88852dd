// Calls inside and outside the contract of the stretch kernels.
#include "checked/checked_support.hpp"

namespace dispconv::test {

std::vector<CheckedCall> stretch_contract_calls() { return {}; }

std::vector<BadCall> stretch_bad_calls() { return {}; }

}  // namespace dispconv::test
