# The sources of the echo canceller, which the program, its tests and the comparison with other cancellers build.
set(vsps_echo_canceller_sources bulk_delay.cpp canceller.cpp fullband_canceller.cpp fullband_step_size.cpp
                                prototype_window.cpp step_size.cpp subband_canceller.cpp)
list(TRANSFORM vsps_echo_canceller_sources PREPEND ${CMAKE_CURRENT_LIST_DIR}/)
