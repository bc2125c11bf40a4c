# SPDX-License-Identifier: Apache-2.0
# Toolchain file: AArch64 by Debian's cross compiler and packages; programs run in qemu.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# libutils needs p7zip's library. Its package cannot be installed for two architectures, so it is
# unpacked here by scripts/setup.sh.
set(p7zip ${CMAKE_CURRENT_LIST_DIR}/../build/aarch64-packages/usr/lib/p7zip)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -Wl,-rpath-link,${p7zip})
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,-rpath-link,${p7zip})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -E LD_LIBRARY_PATH=${p7zip})
