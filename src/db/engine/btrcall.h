/* BTRCALL: the entry point of the zl3btr shared library, with the signature of Btrieve's own,
 * so that programs written for Btrieve's API can work on this engine's files.
 *
 *   status = BTRCALL(operation, positionBlock, dataBuffer, &dataLength, keyBuffer, keyLength,
 *                    keyNumber);
 *
 * positionBlock: 128 bytes kept by the caller between calls on one open file. dataLength: the
 * data buffer's capacity on input, the bytes returned on output. Operation codes and statuses
 * are Btrieve's (see Btrieve.h for the list this engine implements).
 *
 * On Windows the entry point has the calling convention of Btrieve's WBTRV32.DLL: __stdcall
 * (the callee removes the arguments), exported under the plain name "BTRCALL". The 32-bit
 * build also names the library WBTRV32.DLL, so that the suite's 32-bit programs load it. */
#ifndef ZL3_BTRCALL_H
#define ZL3_BTRCALL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define ZL3_BTR_EXPORT __declspec(dllexport)
#define ZL3_BTR_CALL __stdcall
#else
#define ZL3_BTR_EXPORT __attribute__((visibility("default")))
#define ZL3_BTR_CALL
#endif

ZL3_BTR_EXPORT int16_t ZL3_BTR_CALL BTRCALL(uint16_t operation, void* positionBlock, void* dataBuffer,
                               uint32_t* dataLength, void* keyBuffer, uint8_t keyLength,
                               int8_t keyNumber);

#ifdef __cplusplus
}
#endif

#endif
