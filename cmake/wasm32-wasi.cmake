# For WebAssembly with Debian's clang-19, lld-19, llvm-19, libc++-19-dev-wasm32,
# libc++abi-19-dev-wasm32, libclang-rt-19-dev-wasm32 and wasi-libc. There are no exceptions there:
# throwing ends the program.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET wasm32-wasi)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
set(CMAKE_AR llvm-ar-19)
set(CMAKE_RANLIB llvm-ranlib-19)
set(CMAKE_CXX_FLAGS_INIT -fno-exceptions)
set(CMAKE_EXE_LINKER_FLAGS_INIT -mexec-model=reactor) # a library, called by its host
set(CMAKE_INCLUDE_PATH /usr/include) # for headers that bring no code
