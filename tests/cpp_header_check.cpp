// The checked interface compiles on its own, warning-free, as a user would include it.
#include <dispconv.hpp>

#include <array>
#include <type_traits>
#include <vector>

static_assert(std::is_constructible_v<dispconv::Region, std::vector<std::uint8_t>&>);
static_assert(std::is_constructible_v<dispconv::Region, const std::vector<std::uint8_t>&>);
static_assert(std::is_constructible_v<dispconv::Region, std::span<const std::uint8_t>>);
static_assert(std::is_constructible_v<dispconv::Region, std::array<std::uint8_t, 4>&>);
static_assert(!std::is_constructible_v<dispconv::Region, std::vector<int>&>);
static_assert(!std::is_constructible_v<dispconv::Region, const std::uint8_t*>);
