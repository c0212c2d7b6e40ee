# Every target of the project compiles warning-clean with these.
add_compile_options(-Wall -Wextra)

# Gathers test sources: every tst_*.cpp in the calling folder becomes one GoogleTest
# executable linked against the given libraries.
function(vireo_add_tests)
  cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
  file(GLOB _sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/tst_*.cpp")
  foreach(_src IN LISTS _sources)
    get_filename_component(_name "${_src}" NAME_WE)
    add_executable(${_name} "${_src}")
    target_link_libraries(${_name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${_name} DISCOVERY_TIMEOUT 60
      PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_LOGGING_RULES=*.debug=true")
  endforeach()
endfunction()
