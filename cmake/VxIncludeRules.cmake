# Checks who includes whom, as a part of every build. Writes nothing, which scripts/lib.sh knows by the first word of the
# comment.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_custom_target(check-includes ALL
  COMMAND "${Python3_EXECUTABLE}" "${CMAKE_SOURCE_DIR}/cmake/check-includes.py"
  COMMENT "Checking who includes whom"
  VERBATIM)
if(BUILD_TESTING AND NOT WIN32)
  add_test(NAME IncludeRules COMMAND "${Python3_EXECUTABLE}" "${CMAKE_SOURCE_DIR}/cmake/check-includes.py")
  set_tests_properties(IncludeRules PROPERTIES LABELS unit)
endif()
