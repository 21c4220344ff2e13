# compile_together(TARGET SIZE [ALONE SOURCE...]) compiles the target's sources in batches of at most
# SIZE, all of a batch from one folder, which takes about half the time. Names in the unnamed namespaces
# of a folder must differ for that; a source after ALONE is compiled by itself. Called in the folder that
# adds the target.
option(COMPILE_TOGETHER "Compile sources in batches" ON)

function(compile_together target size)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" ALONE)
  if(NOT COMPILE_TOGETHER)
    return()
  endif()
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "\\.cpp$")
  foreach(source ${sources})
    get_filename_component(name ${source} NAME)
    if(name IN_LIST arg_ALONE)
      continue()
    endif()
    get_filename_component(path ${source} ABSOLUTE)
    file(RELATIVE_PATH path ${CMAKE_SOURCE_DIR} ${path})
    get_filename_component(folder ${path} DIRECTORY)
    string(MAKE_C_IDENTIFIER ${folder} folder)
    math(EXPR batch "0${count_${folder}} / ${size}")
    math(EXPR count_${folder} "0${count_${folder}} + 1")
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${folder}_${batch})
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  # A batch includes what it compiles, which this warning takes for headers.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
  endif()
  # strsafe.h must come last in a source, since it takes functions away that other headers name.
  target_compile_definitions(${target} PRIVATE STRSAFE_NO_DEPRECATE)
  # And winsock2.h before windows.h.
  if(WIN32)
    target_compile_options(${target} PRIVATE -include winsock2.h)
  endif()
endfunction()
