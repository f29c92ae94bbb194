# What every target of ours is compiled with.
add_library(kqu_options INTERFACE)
target_include_directories(kqu_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(kqu_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wundef
  -fno-fast-math -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(kqu_options INTERFACE
    -Wduplicated-cond -Wduplicated-branches -Wlogical-op)
else()
  # It minds what the macros of sd-bus are made of.
  target_compile_options(kqu_options INTERFACE -Wno-c99-extensions)
endif()

# The hardening that the distribution gives its packages, in a build by hand as well. Copies are
# checked only where code is optimised.
target_compile_options(kqu_options INTERFACE
  -fPIE -fstack-protector-strong -Werror=format-security)
target_link_options(kqu_options INTERFACE -pie -Wl,-z,relro -Wl,-z,now)
foreach(CONFIG RELEASE RELWITHDEBINFO MINSIZEREL)
  string(APPEND CMAKE_CXX_FLAGS_${CONFIG} " -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2")
endforeach()

if(KQU_WARNINGS_AS_ERRORS)
  target_compile_options(kqu_options INTERFACE -Werror)
endif()
if(KQU_SANITIZE)
  # The first tells the fuzzer where an input led; the fuzzer itself is linked to its targets alone.
  target_compile_options(kqu_options INTERFACE -fsanitize=fuzzer-no-link)
  set(KQU_SANITIZERS -fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all
      -fno-omit-frame-pointer)
  target_compile_options(kqu_options INTERFACE ${KQU_SANITIZERS})
  target_link_options(kqu_options INTERFACE ${KQU_SANITIZERS})
endif()
if(KQU_COVERAGE)
  target_compile_options(kqu_options INTERFACE --coverage)
  target_link_options(kqu_options INTERFACE --coverage)
endif()

# What every program of ours is linked with. Each carries the parts of the C++ runtime that it uses:
# nobody else in its process needs that library, and loading it whole costs a megabyte of resident
# memory and a good part of the start. Relocations are packed: forty kilobytes of them would be resident for
# good. The sanitizers want the runtime shared.
add_library(kqu_program INTERFACE)
if(NOT KQU_SANITIZE)
  target_link_options(kqu_program INTERFACE -static-libstdc++ -static-libgcc -Wl,--gc-sections
                      -Wl,-z,pack-relative-relocs)
endif()
