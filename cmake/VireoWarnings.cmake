# Every target of the project compiles warning-clean with these.
add_compile_options(-Wall -Wextra)

# One GoogleTest executable per source in SOURCES, named after the file and linked against
# LIBS. The sources are listed rather than globbed so that a half-written or stray
# tst_*.cpp in a test folder never changes what the build compiles and runs. With GUI,
# the tests run inside a QGuiApplication (offscreen), for fonts, images and timers. With
# QTTHREADS, they are left out of the tsan preset (see below).
function(vireo_add_tests)
  cmake_parse_arguments(ARG "GUI;QTTHREADS" "" "LIBS;SOURCES" ${ARGN})
  if(ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "vireo_add_tests: unexpected arguments: ${ARG_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT ARG_SOURCES)
    message(FATAL_ERROR "vireo_add_tests: no SOURCES given")
  endif()
  foreach(_src IN LISTS ARG_SOURCES)
    get_filename_component(_name "${_src}" NAME_WE)
    add_executable(${_name} "${_src}")
    if(ARG_GUI)
      target_link_libraries(${_name} PRIVATE ${ARG_LIBS} vireo_guitest_main GTest::gtest GTest::gmock)
    else()
      target_link_libraries(${_name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gmock GTest::gtest_main)
    endif()
    # GUI tests paint, scale images and lay out text, which Qt hands to threads of its
    # own pool; the tsan preset leaves them out (label "gui"), as Qt is not built for it.
    # For the same reason it leaves out tests whose threads meet only through Qt's event
    # queues, its network thread or glib (label "qtthreads"): ThreadSanitizer cannot see
    # that synchronisation and reports races that are not there.
    # The label goes first: test discovery hands the ENVIRONMENT list on as separate words.
    set(_labels "")
    if(ARG_GUI)
      set(_labels LABELS gui)
    elseif(ARG_QTTHREADS)
      set(_labels LABELS qtthreads)
    endif()
    gtest_discover_tests(${_name} DISCOVERY_TIMEOUT 60
      PROPERTIES ${_labels}
                 ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_LOGGING_RULES=*.debug=true")
  endforeach()
endfunction()
