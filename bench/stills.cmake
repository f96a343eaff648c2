# Reading and writing stills, beside bare libjpeg, bare libpng and, where it is installed, OpenCV.
add_executable(bench_stills stills.cpp BareStills.cpp)
target_link_libraries(bench_stills PRIVATE kovanta_contest Kovanta kovanta_settings JPEG::JPEG PNG::PNG)
find_package(OpenCV QUIET COMPONENTS core imgcodecs)
if(OpenCV_FOUND)
  target_compile_definitions(bench_stills PRIVATE BENCH_OPENCV)
  target_include_directories(bench_stills SYSTEM PRIVATE ${OpenCV_INCLUDE_DIRS})
  target_link_libraries(bench_stills PRIVATE opencv_core opencv_imgcodecs)
endif()
