// Calls inside and outside the contract of the mix kernels.
#include "checked/checked_support.hpp"

namespace dispconv::test {

std::vector<CheckedCall> mix_contract_calls() { return {}; }

std::vector<BadCall> mix_bad_calls() { return {}; }

}  // namespace dispconv::test
