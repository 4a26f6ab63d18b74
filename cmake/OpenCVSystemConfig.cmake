# CMake package for Debian's native OpenCV: libopencv-core-dev and libopencv-imgproc-dev bring headers and
# libraries but no CMake package (that one is in a package that pulls in all of OpenCV).
# Components: core, imgproc.

find_path(OpenCV_INCLUDE_DIRS opencv2/core.hpp PATHS /usr/include/opencv4)
set(OpenCV_FOUND TRUE)
set(OpenCV_LIBS "")
foreach(component IN ITEMS core imgproc)
  find_library(OpenCV_${component}_LIBRARY opencv_${component})
  if(OpenCV_INCLUDE_DIRS AND OpenCV_${component}_LIBRARY AND NOT TARGET opencv_${component})
    add_library(opencv_${component} SHARED IMPORTED)
    set_target_properties(opencv_${component} PROPERTIES
      IMPORTED_LOCATION "${OpenCV_${component}_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${OpenCV_INCLUDE_DIRS}")
  endif()
  if(TARGET opencv_${component})
    set(OpenCV_${component}_FOUND TRUE)
    list(APPEND OpenCV_LIBS opencv_${component})
  endif()
endforeach()
if(TARGET opencv_imgproc)
  set_property(TARGET opencv_imgproc PROPERTY INTERFACE_LINK_LIBRARIES opencv_core)
endif()

if(NOT OpenCV_INCLUDE_DIRS)
  set(OpenCV_FOUND FALSE)
endif()
foreach(component IN LISTS OpenCV_FIND_COMPONENTS)
  if(OpenCV_FIND_REQUIRED_${component} AND NOT OpenCV_${component}_FOUND)
    set(OpenCV_FOUND FALSE)
    set(OpenCV_NOT_FOUND_MESSAGE "libopencv-${component}-dev is missing: run scripts/setup")
  endif()
endforeach()
