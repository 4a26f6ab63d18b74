# Libraries that are not ours: Debian's, built by scripts/third-party into build/third-party.

find_package(pugixml REQUIRED)
find_package(OpenCV REQUIRED COMPONENTS core imgproc OPTIONAL_COMPONENTS imgcodecs)
find_package(CLI11 QUIET)
if(BUILD_TESTING)
  find_package(GTest REQUIRED)
endif()
if(VX_BENCHMARKS)
  find_package(benchmark REQUIRED)
endif()
