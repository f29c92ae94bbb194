# Reading the standard library's headers is most of what a build does. In the sanitizers' build each
# target has them read once; not in the others, where a missing #include must not stay hidden.
function(kqu_precompile)
  if(KQU_SANITIZE)
    foreach(TARGET IN LISTS ARGN)
      target_precompile_headers(${TARGET} PRIVATE <algorithm> <any> <array> <chrono> <filesystem>
        <functional> <map> <memory> <optional> <span> <string> <unordered_map> <variant> <vector>)
    endforeach()
  endif()
endfunction()
