# SPDX-License-Identifier: BSD-2-Clause
# One interface target carries what every target of this project is compiled with.
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_EXTENSIONS OFF)

add_library(kovanta_settings INTERFACE)
target_compile_features(kovanta_settings INTERFACE cxx_std_17)
target_compile_options(kovanta_settings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(KOVANTA_WERROR)
  target_compile_options(kovanta_settings INTERFACE -Werror)
endif()

if(KOVANTA_SANITIZE)
  target_compile_options(kovanta_settings INTERFACE -fsanitize=${KOVANTA_SANITIZE} -fno-omit-frame-pointer)
  if(KOVANTA_SANITIZE MATCHES "undefined")
    target_compile_options(kovanta_settings INTERFACE -fno-sanitize-recover=undefined)
  endif()
  target_link_options(kovanta_settings INTERFACE -fsanitize=${KOVANTA_SANITIZE})
endif()
if(KOVANTA_COVERAGE)
  target_compile_options(kovanta_settings INTERFACE --coverage)
  target_link_options(kovanta_settings INTERFACE --coverage)
endif()

# What hardens the shipped library against faults in it: release builds only, since sanitizers bring their own checks.
if(NOT KOVANTA_SANITIZE AND NOT KOVANTA_COVERAGE AND NOT KOVANTA_BUILD_FUZZ)
  set(in_release "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
  target_compile_options(kovanta_settings INTERFACE
    "$<${in_release}:-fstack-protector-strong;-fstack-clash-protection;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  target_link_options(kovanta_settings INTERFACE "$<${in_release}:-Wl,-z,relro,-z,now,-z,noexecstack>")
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL x86_64)
    target_compile_options(kovanta_settings INTERFACE "$<${in_release}:-fcf-protection=full>")
  endif()
endif()

# Marks a shared library as ready for control-flow enforcement. The linker drops the mark for the sake of the system's
# own _init and _fini, which do nothing but lack their landing pads: the library goes without them.
function(kovanta_mark_control_flow library)
  if(in_release AND CMAKE_SYSTEM_PROCESSOR STREQUAL x86_64)
    target_link_options(${library} PRIVATE "$<${in_release}:-Wl,-z,ibt,-z,shstk,-init=none,-fini=none>")
  endif()
endfunction()
