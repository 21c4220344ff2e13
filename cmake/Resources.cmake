# Compiles a resource script to a .res file in its standard binary form. On the host the script's
# SDK header is our own.
find_program(WINDRES NAMES x86_64-w64-mingw32-windres windres)
if(NOT WINDRES)
  message(FATAL_ERROR "windres is missing: install binutils-mingw-w64-x86-64")
endif()

function(compile_resources script output)
  if(WIN32)
    set(include_path)
  else()
    set(include_path -I ${CMAKE_SOURCE_DIR}/platform/include)
  endif()
  get_filename_component(folder ${script} DIRECTORY)
  file(GLOB inputs CONFIGURE_DEPENDS ${folder}/*.h ${folder}/*.bmp)
  add_custom_command(
    OUTPUT ${output}
    COMMAND ${WINDRES} -O res ${include_path} -I ${folder} -i ${script} -o ${output}
    DEPENDS ${script} ${inputs}
    VERBATIM)
endfunction()
