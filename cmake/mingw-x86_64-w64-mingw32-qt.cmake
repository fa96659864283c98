# Cross-compiling the Windows application (x86_64): Qt's DLLs and the program share one C++
# runtime, so nothing is linked statically here; tools/windows_app.sh copies the MinGW runtime
# DLLs (libstdc++-6, libgcc_s_seh-1, libwinpthread-1) beside the executable.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-x86_64-w64-mingw32.cmake)
set(CMAKE_EXE_LINKER_FLAGS_INIT "")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "")
list(APPEND CMAKE_FIND_ROOT_PATH ${ZL3_WIN_CACHE}/${ZL3_MINGW_TRIPLET}/qt6)
