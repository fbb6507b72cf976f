# Installs `build` and moves the installed tree to `installed`.
file(REMOVE_RECURSE ${installed})
execute_process(
  COMMAND ${CMAKE_COMMAND} --install ${build} --prefix ${installed}.before
  COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${installed}.before ${installed})
