# Video files read, beside bare libavformat and libavcodec.
add_executable(bench_videoread videoread.cpp)
target_link_libraries(bench_videoread PRIVATE kovanta_contest Kovanta kovanta_settings PkgConfig::LIBAV)
target_include_directories(bench_videoread PRIVATE ${PROJECT_SOURCE_DIR}/src)
