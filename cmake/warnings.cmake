# Warnings are errors everywhere in this tree.
add_library(orv_warnings INTERFACE)
target_compile_options(orv_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wcast-qual -Wundef -Werror
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor>
  # Lanes of vector types travel in registers between inlined functions only; their call convention never matters.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-psabi -Wno-ignored-attributes>)
