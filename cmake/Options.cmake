# What every target of ours is compiled with.
add_library(kqu_options INTERFACE)
target_include_directories(kqu_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(kqu_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wundef
  -Wduplicated-cond -Wduplicated-branches -Wlogical-op
  -fno-fast-math -ffp-contract=off)
if(KQU_WARNINGS_AS_ERRORS)
  target_compile_options(kqu_options INTERFACE -Werror)
endif()
if(KQU_SANITIZE)
  set(KQU_SANITIZERS -fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all
      -fno-omit-frame-pointer)
  target_compile_options(kqu_options INTERFACE ${KQU_SANITIZERS})
  target_link_options(kqu_options INTERFACE ${KQU_SANITIZERS})
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
