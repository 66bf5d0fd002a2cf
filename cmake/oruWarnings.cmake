# Warning and sanitizer flags shared by every target of the project.
add_library(oru_build_flags INTERFACE)
target_compile_options(oru_build_flags INTERFACE
  $<$<COMPILE_LANG_AND_ID:CXX,GNU,Clang>:-Wall -Wextra -Wshadow -Wnon-virtual-dtor>
  $<$<COMPILE_LANG_AND_ID:C,GNU,Clang>:-Wall -Wextra -Wshadow>)
if(ORU_WERROR)
  target_compile_options(oru_build_flags INTERFACE
    $<$<COMPILE_LANG_AND_ID:CXX,GNU,Clang>:-Werror>
    $<$<COMPILE_LANG_AND_ID:C,GNU,Clang>:-Werror>)
endif()

# GCC 12 at -O2 and above reports impossible overlaps inside std::string's
# own copies (-Wrestrict on char_traits::copy, GCC bug 105329); the warning
# says nothing about this project's code there, so it stays a warning.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12
   AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(oru_build_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-error=restrict>)
endif()

if(ORU_SANITIZE)
  # Applied globally so that tests and the library agree on the runtime.
  add_compile_options(-fsanitize=${ORU_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ORU_SANITIZE})
endif()
