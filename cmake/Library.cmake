# The library: an object library for each of its folders, and all of them together as a DLL on
# Windows and as a static archive on the host.
include(LibraryFolders)

# The thread sanitizer watches the library but not the stand-in, whose baton it must not see.
option(SANITIZE_THREADS "Build the library with the thread sanitizer" OFF)
if(SANITIZE_THREADS)
  add_link_options(-fsanitize=thread)
endif()

set(library_objects)
foreach(folder ${LIBRARY_FOLDERS})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  add_library(${folder} OBJECT ${sources})
  compile_together(${folder} 8 ALONE ProbeContext.cpp ScenarioRun.cpp)
  target_include_directories(${folder} PRIVATE ${CMAKE_SOURCE_DIR}/inc/user)
  target_link_libraries(${folder} PRIVATE Warnings)
  if(NOT WIN32)
    target_include_directories(${folder} SYSTEM PRIVATE ${CMAKE_SOURCE_DIR}/platform/include)
  endif()
  if(SANITIZE_THREADS)
    target_compile_options(${folder} PRIVATE -fsanitize=thread)
  endif()
  list(APPEND library_objects $<TARGET_OBJECTS:${folder}>)
endforeach()

if(WIN32)
  get_property(library_res GLOBAL PROPERTY LIBRARY_RES_OBJECT)
  add_library(WinTsrTune_ipoib SHARED ${library_objects} resources/WinTsrTune_ipoib.def)
  add_dependencies(WinTsrTune_ipoib library_resources)
  set_target_properties(WinTsrTune_ipoib PROPERTIES PREFIX "" LINKER_LANGUAGE CXX)
  target_link_options(WinTsrTune_ipoib PRIVATE -s)
  target_link_libraries(WinTsrTune_ipoib PRIVATE
    ${library_res}
    cfgmgr32 setupapi gdi32 comctl32 comdlg32 shlwapi iphlpapi oleaut32 ole32 uuid)
else()
  add_library(WinTsrTune_ipoib STATIC ${library_objects})
  set_target_properties(WinTsrTune_ipoib PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(WinTsrTune_ipoib PUBLIC platform)
endif()
