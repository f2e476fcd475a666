# One folder is one target: every .cpp file in it belongs to it, its public headers stand under
# include/<folder>/, and it sees only the rooms it is given here.

add_library(stab_options INTERFACE)
target_compile_options(stab_options INTERFACE -Wall -Wextra -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 sees overlapping copies in std::string's own operator+ (its bug 105329).
  target_compile_options(stab_options INTERFACE -Wno-restrict)
endif()
if(STAB_WERROR)
  target_compile_options(stab_options INTERFACE -Werror)
endif()
if(STAB_SANITIZE)
  target_compile_options(stab_options INTERFACE -fsanitize=${STAB_SANITIZE}
                                                -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  target_link_options(stab_options INTERFACE -fsanitize=${STAB_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Between the sanitizer's calls g++ 12 loses track of a std::string's size and sees copies past its
    # end. The same code is compiled without them, with these warnings on, in every other build.
    target_compile_options(stab_options INTERFACE -Wno-array-bounds -Wno-stringop-overflow
                                                  -Wno-stringop-overread)
  endif()
endif()
if(STAB_FUZZ)
  # Rooms count their branches for the fuzzer; its main() comes with the fuzzers alone.
  target_compile_options(stab_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
find_package(Threads REQUIRED)
target_link_libraries(stab_options INTERFACE Threads::Threads ${CMAKE_DL_LIBS})

# stab_room(<target> <OBJECT|STATIC> [rooms it may use ...])
function(stab_room target kind)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_library(${target} ${kind} ${sources})
  target_include_directories(${target} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include)
  target_link_libraries(${target} PUBLIC ${ARGN} PRIVATE stab_options)
endfunction()

# stab_test(<folder> [rooms ...]): tests/<folder>/*.cpp as one program, every TEST a ctest case. What
# every test includes is read once for all; Qt's programs are compiled in another way and read it again.
function(stab_test folder)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp)
  string(REPLACE "/" "_" name test_${folder})
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${ARGN} stab_test_environment stab_options GTest::gtest_main)
  target_compile_options(${name} PRIVATE ${STAB_TEST_OPTIONS})
  if("${ARGN}" MATCHES "Qt6::")
    target_precompile_headers(${name} PRIVATE <gtest/gtest.h>)
  else()
    target_precompile_headers(${name} REUSE_FROM stab_test_environment)
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60)
endfunction()
