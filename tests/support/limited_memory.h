// Whether a test can run out of memory.
#pragma once

namespace mnd_test {

// False under the address sanitizer, which reserves the whole address space and ends the program
// where an allocation fails.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kMemoryCanBeLimited = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr bool kMemoryCanBeLimited = false;
#else
inline constexpr bool kMemoryCanBeLimited = true;
#endif
#else
inline constexpr bool kMemoryCanBeLimited = true;
#endif

}  // namespace mnd_test
