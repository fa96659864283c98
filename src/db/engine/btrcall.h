/* BTRCALL: the entry point of the zl3btr shared library, with the signature of Btrieve's own,
 * so that programs written for Btrieve's API can work on this engine's files.
 *
 *   status = BTRCALL(operation, positionBlock, dataBuffer, &dataLength, keyBuffer, keyLength,
 *                    keyNumber);
 *
 * positionBlock: 128 bytes kept by the caller between calls on one open file. dataLength: the
 * data buffer's capacity on input, the bytes returned on output. Operation codes and statuses
 * are Btrieve's (see Btrieve.h for the list this engine implements). */
#ifndef ZL3_BTRCALL_H
#define ZL3_BTRCALL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define ZL3_BTR_EXPORT __declspec(dllexport)
#else
#define ZL3_BTR_EXPORT __attribute__((visibility("default")))
#endif

ZL3_BTR_EXPORT int16_t BTRCALL(uint16_t operation, void* positionBlock, void* dataBuffer,
                               uint32_t* dataLength, void* keyBuffer, uint8_t keyLength,
                               int8_t keyNumber);

#ifdef __cplusplus
}
#endif

#endif
