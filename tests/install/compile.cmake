# Compiles `source` against an installed tree and runs it.
set(flags -I${includedir} -L${libdir} -lpelion_core_host -lpelion_core)
if(use_pkg_config)
  set(ENV{PKG_CONFIG_PATH} ${libdir}/pkgconfig)
  execute_process(COMMAND pkg-config --cflags --libs pelion_core_host
    OUTPUT_VARIABLE flags COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
endif()
execute_process(
  COMMAND ${compiler} -std=c++17 -Wall -Wextra -Wpedantic -Werror ${source} ${flags} -o ${output}
  COMMAND_ERROR_IS_FATAL ANY)
set(ENV{LD_LIBRARY_PATH} ${libdir})
execute_process(COMMAND ${output} COMMAND_ERROR_IS_FATAL ANY)
