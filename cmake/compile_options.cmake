# Options of every target of this project.
#
# Printed digits are part of the result: contraction of a*b+c is off, and no flag may
# reorder floating-point arithmetic.
add_library(mendcore_options INTERFACE)
target_compile_options(mendcore_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual
  -Werror -ffp-contract=off)
# GCC 12 takes "text" + std::to_string(n) for a copy onto itself when it optimises (its bug 105651).
target_compile_options(mendcore_options INTERFACE
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
if(MENDCORE_COUNT_DRAWS)
  target_compile_definitions(mendcore_options INTERFACE MENDCORE_COUNT_DRAWS)
endif()
