#pragma once

// What compilers spell differently, or not at all: Microsoft's lets every function use every instruction, and aligns the
// stack as these need it.
#if defined(__GNUC__) || defined(__clang__)
#define TARN_PRINTF_FORMAT(text, values) [[gnu::format(printf, text, values)]]
#define TARN_VECTOR_FUNCTION(instructions) [[gnu::target(instructions), gnu::force_align_arg_pointer]]
#define TARN_UNROLL _Pragma("GCC unroll 16")
#else
#define TARN_PRINTF_FORMAT(text, values)
#define TARN_VECTOR_FUNCTION(instructions)
#define TARN_UNROLL
#endif

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#define TARN_X86
#endif
