# The libraries that Debian has for itself only, made for Windows: SQLite and GoogleTest from their sources, the others
# as headers. What looks for their packages finds these targets.
enable_language(C)

function(vorlent_has_package name)
  string(TOLOWER "${name}" lower)
  file(WRITE "${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/${lower}-config.cmake" "# ${name} is a target of this build.\n")
endfunction()

# --- SQLite --------------------------------------------------------------------------------------------------
set(VORLENT_SQLITE "${PROJECT_SOURCE_DIR}/build/sqlite" CACHE PATH "Where sqlite3.c and sqlite3.h lie")
if(NOT EXISTS "${VORLENT_SQLITE}/sqlite3.c")
  message(FATAL_ERROR "No sqlite3.c in ${VORLENT_SQLITE}: run scripts/windows.sh, which fetches it")
endif()
add_library(vorlent_sqlite STATIC "${VORLENT_SQLITE}/sqlite3.c")
add_library(SQLite::SQLite3 ALIAS vorlent_sqlite)
target_include_directories(vorlent_sqlite SYSTEM PUBLIC "${VORLENT_SQLITE}")
target_compile_definitions(vorlent_sqlite PRIVATE SQLITE_ENABLE_FTS5 SQLITE_THREADSAFE=1)
target_compile_options(vorlent_sqlite PRIVATE -O2 -w)
vorlent_has_package(SQLite3)

# --- Headers -------------------------------------------------------------------------------------------------
# Those of /usr/include as a whole are another system's.
function(vorlent_header_library target folder)
  set(place "${CMAKE_BINARY_DIR}/headers/${folder}")
  file(MAKE_DIRECTORY "${place}")
  file(CREATE_LINK "/usr/include/${folder}" "${place}/${folder}" SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} SYSTEM INTERFACE "${place}")
endfunction()

if(VORLENT_BUILD_HOST)
  vorlent_header_library(CLI11::CLI11 CLI)
  vorlent_header_library(fmt::fmt fmt)
  target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY)
  vorlent_header_library(nlohmann_json::nlohmann_json nlohmann)
  foreach(package CLI11 fmt nlohmann_json)
    vorlent_has_package(${package})
  endforeach()
endif()

# --- GoogleTest ----------------------------------------------------------------------------------------------
if(VORLENT_BUILD_TESTS)
  set(gtest_disable_pthreads ON CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
  foreach(target gmock gtest_main)
    if(NOT TARGET GTest::${target})
      add_library(GTest::${target} ALIAS ${target})
    endif()
  endforeach()
  vorlent_has_package(GTest)
endif()
