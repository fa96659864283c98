#include "Btrieve.h"
#include "btrcall.h"

extern "C" int16_t ZL3_BTR_CALL BTRCALL(uint16_t operation, void* positionBlock, void* dataBuffer,
                           uint32_t* dataLength, void* keyBuffer, uint8_t keyLength,
                           int8_t keyNumber) {
    return zl3::btr::BtrCall(operation, positionBlock, dataBuffer, dataLength, keyBuffer, keyLength,
                             keyNumber);
}
