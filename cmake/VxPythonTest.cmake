# vx_python_test(NAME [DRIVER script arguments ...]): NAME.py in the calling folder, a script that ends with
# vx_unittest.main(). A driver is a script that runs it.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
function(vx_python_test name)
  cmake_parse_arguments(arg "" "" "DRIVER" ${ARGN})
  add_test(NAME ${name} COMMAND ${arg_DRIVER} "${Python3_EXECUTABLE}" -B "${CMAKE_CURRENT_SOURCE_DIR}/${name}.py"
    WORKING_DIRECTORY "${CMAKE_BINARY_DIR}")
  set_tests_properties(${name} PROPERTIES LABELS unit TIMEOUT 120
    ENVIRONMENT "GTEST_OUTPUT=xml:test-results/${name}.xml;PYTHONPATH=${CMAKE_SOURCE_DIR}/Tests/support/python")
endfunction()
