# tarn_warnings(TARGET): the warnings that the project's own code is held to.
function(tarn_warnings target)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 $<$<BOOL:${TARN_WERROR}>:/WX>)
    return()
  endif()
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wformat=2
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Woverloaded-virtual;-Wold-style-cast>
    $<$<BOOL:${TARN_WERROR}>:-Werror>)
endfunction()
