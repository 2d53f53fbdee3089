# The product: the shared library, its public headers, and what other builds find it by.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(publicHeaders
  Component/Component.h
  Common/KeyIndex.h Common/KeyedList.h
  Platform/CodePage.h Platform/Failure.h Platform/NativePaths.h Platform/Platform.h Platform/Public.h
  Platform/Rules.def Platform/Rules.h Platform/Settings.h Platform/Time.h)
file(GLOB contractHeaders CONFIGURE_DEPENDS RELATIVE "${CMAKE_CURRENT_SOURCE_DIR}" Host/*.h)
list(APPEND publicHeaders ${contractHeaders})
set(headerFolder "${CMAKE_INSTALL_INCLUDEDIR}/vorlent-mozilla")

add_library(vorlent_mozilla SHARED $<TARGET_OBJECTS:vorlent_objects>)
add_library(VorlentMozilla::vorlent_mozilla ALIAS vorlent_mozilla)
set_target_properties(vorlent_mozilla PROPERTIES
  VERSION "${PROJECT_VERSION}" SOVERSION "${PROJECT_VERSION_MAJOR}"
  LINK_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/Library.map")
target_compile_features(vorlent_mozilla INTERFACE cxx_std_20)
target_include_directories(vorlent_mozilla INTERFACE
  "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>" "$<INSTALL_INTERFACE:${headerFolder}>")
target_link_libraries(vorlent_mozilla PRIVATE SQLite::SQLite3)
# Instances of the standard library's templates are the library's own matter too.
target_link_options(vorlent_mozilla PRIVATE
  "LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/Library.map" "LINKER:--no-undefined")
if(VORLENT_SANITIZE)
  target_link_options(vorlent_mozilla PRIVATE ${sanitizers} "LINKER:-z,undefs")
endif()

install(TARGETS vorlent_mozilla EXPORT VorlentMozillaTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development)
foreach(header IN LISTS publicHeaders)
  get_filename_component(folder "${header}" DIRECTORY)
  install(FILES "${header}" DESTINATION "${headerFolder}/${folder}" COMPONENT development)
endforeach()

set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/VorlentMozilla")
install(EXPORT VorlentMozillaTargets NAMESPACE VorlentMozilla:: DESTINATION "${packageFolder}" COMPONENT development)
file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/VorlentMozillaConfig.cmake"
  "include(\"\${CMAKE_CURRENT_LIST_DIR}/VorlentMozillaTargets.cmake\")\n")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/VorlentMozillaConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/VorlentMozillaConfig.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/VorlentMozillaConfigVersion.cmake"
  DESTINATION "${packageFolder}" COMPONENT development)

# Found from where the file lies, so that the whole can be moved.
file(RELATIVE_PATH prefixFromPackageFile "/usr/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/usr")
configure_file(vorlent-mozilla.pc.in vorlent-mozilla.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/vorlent-mozilla.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
