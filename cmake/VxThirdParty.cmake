# Libraries that are not ours: Debian's; what it has no package of is built by scripts/third-party into
# build/third-party.

find_package(pugixml REQUIRED)
# Debian's own static zlib for either system: the module brings no library along.
set(ZLIB_USE_STATIC_LIBS ON)
find_package(ZLIB REQUIRED)
find_package(OpenCV REQUIRED COMPONENTS core imgproc OPTIONAL_COMPONENTS imgcodecs)
find_package(CLI11 QUIET)
if(BUILD_TESTING)
  find_package(GTest REQUIRED)
endif()
if(VX_BENCHMARKS)
  find_package(benchmark REQUIRED)
endif()
