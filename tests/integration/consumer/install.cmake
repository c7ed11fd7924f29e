# cmake -D build=DIR -D work=DIR -P install.cmake: installs the build into work/prefix, from nothing.
# It goes by way of another directory, since an installed tree may be moved.

file(REMOVE_RECURSE ${work}/prefix ${work}/staging ${work}/build ${work}/pkgconfig)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${build} --prefix ${work}/staging COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${work}/staging ${work}/prefix)
