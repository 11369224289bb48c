# One function for each kind of thing that is built.

find_package(GTest REQUIRED)
find_package(Threads REQUIRED)

# ormel_dropin(TARGET FILE SOURCES...): a platform or client library, found by its unversioned file name, so that a host
# can put its own in its place.
function(ormel_dropin target file)
  add_library(${target} SHARED ${ARGN})
  target_link_libraries(${target} PRIVATE ormel_options)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${file} INSTALL_RPATH "$ORIGIN" EXPORT_NAME ${file})
  install(TARGETS ${target} EXPORT ormeldb LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

# ormel_engine(NAME SOURCES...): a database engine that libqdclient loads by name when it is first asked for.
function(ormel_engine name)
  add_library(ormel_engine_${name} MODULE ${ARGN})
  target_link_libraries(ormel_engine_${name} PRIVATE ormel_options)
  set_target_properties(ormel_engine_${name} PROPERTIES
    OUTPUT_NAME ${name} PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/ormeldb/engines)
  install(TARGETS ormel_engine_${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/ormeldb/engines)
endfunction()

# ormel_test(NAME SOURCES...): a GoogleTest program and the test that runs it.
function(ormel_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE ormel_options GTest::gmock_main)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
endfunction()
