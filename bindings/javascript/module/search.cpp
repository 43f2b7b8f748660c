// What the C library has for finding bytes, with the vectors of WebAssembly, and inlined where it
// is called.
#include <wasm_simd128.h>

#include <cstddef>
#include <cstdint>

namespace
{

constexpr std::size_t width = sizeof(v128_t);

// The vectors are at multiples of their width, so that what they hold beyond the bytes is memory.
// Where the byte is among those from begin on, in its vector or one behind it; at least size when
// it is not among so many.
std::size_t find(const char *begin, char byte, std::size_t size)
{
    const v128_t wanted = wasm_i8x16_splat(static_cast<std::int8_t>(byte));
    const std::size_t in_front = reinterpret_cast<std::uintptr_t>(begin) % width;
    const char *vector = begin - in_front;
    std::uint32_t found =
        wasm_i8x16_bitmask(wasm_i8x16_eq(wasm_v128_load(vector), wanted)) >> in_front;
    if (found != 0)
        return static_cast<std::size_t>(__builtin_ctz(found));
    for (std::size_t at = width - in_front; at < size; at += width) {
        found = wasm_i8x16_bitmask(wasm_i8x16_eq(wasm_v128_load(begin + at), wanted));
        if (found != 0)
            return at + static_cast<std::size_t>(__builtin_ctz(found));
    }
    return size;
}

} // namespace

extern "C" {

std::size_t strlen(const char *text)
{
    return find(text, '\0', SIZE_MAX);
}

void *memchr(const void *bytes, int byte, std::size_t size)
{
    const char *const begin = static_cast<const char *>(bytes);
    const std::size_t at = size == 0 ? 0 : find(begin, static_cast<char>(byte), size);
    return at < size ? const_cast<char *>(begin + at) : nullptr;
}

} // extern "C"
