/// \file
/// The host functions, each as the plug-in calls it but for the host in front. What each one does towards the
/// plug-in stands in `src/abi/host_abi.h`; what is wrong about a call goes to the ledger.
#pragma once

#include "abi/host_abi.h"
#include "host/core/core.h"

#include <cstdint>

namespace standin
{

// Registration and objects: host/services/object_functions.cpp.
void announceVersion(Core& core, std::int32_t layoutVersion);
double hostVersion(Core& core);
void registerClass(Core& core, REALclassDefinition* definition);
void registerClassExtension(Core& core, REALclassDefinition* definition);
void registerMethod(Core& core, REALmethodDefinition* method);
void lockObject(Core& core, REALobject object);
void unlockObject(Core& core, REALobject object);
void* classReference(Core& core, const char* className);
bool getIntProperty(Core& core, REALobject object, const char* name, std::int32_t* value);
bool setIntProperty(Core& core, REALobject object, const char* name, std::int32_t value);
bool setUInt32Property(Core& core, REALobject object, const char* name, std::uint32_t value);
bool setStringProperty(Core& core, REALobject object, const char* name, REALstringStruct* value);
void* loadObjectMethod(Core& core, REALobject object, const char* declaration);
void* loadGlobalMethod(Core& core, void* null, const char* declaration);
REALobjectStruct* newException(Core& core, const char* className);
void raiseException(Core& core, REALobjectStruct* exception);
REALmemoryBlockStruct* newMemoryBlock(Core& core, std::int32_t size);
void* memoryBlockPointer(Core& core, REALmemoryBlockStruct* block);
std::int32_t memoryBlockSize(Core& core, REALmemoryBlockStruct* block);

// Pictures: host/services/picture_functions.cpp.
REALpictureStruct* newPicture(Core& core, std::int32_t width, std::int32_t height, std::int32_t depth);
REALgraphicsStruct* pictureGraphics(Core& core, REALpictureStruct* picture);
void lockDescription(Core& core, REALpictureStruct* picture, REALpictureDescription* description);
bool lockDescriptionOfType(Core& core, REALpictureStruct* picture, REALpictureDescription* description,
                           std::int32_t type);
/// The same when it fails.
bool failToLock(Core& core, REALpictureStruct* picture, REALpictureDescription* description,
                std::int32_t type);
void unlockDescription(Core& core, REALpictureStruct* picture);
void clearCache(Core& core, REALpictureStruct* picture);
REALpictureStruct* pictureFromBuffer(Core& core, std::int32_t width, std::int32_t height,
                                     std::int32_t pixelType, void* buffer, std::int32_t rowBytes);
REALpictureStruct* pictureMask(Core& core, REALpictureStruct* picture, bool create);
void drawLine(Core& core, REALgraphicsStruct* graphics, std::int32_t x1, std::int32_t y1, std::int32_t x2,
              std::int32_t y2);
void drawPicture(Core& core, REALgraphicsStruct* graphics, REALpictureStruct* image, std::int32_t x,
                 std::int32_t y, std::int32_t w, std::int32_t h, std::int32_t sx, std::int32_t sy,
                 std::int32_t sw, std::int32_t sh);

// Strings: host/services/string_functions.cpp.
REALstringStruct* buildString(Core& core, const void* bytes, std::int32_t length);
void setEncoding(Core& core, REALstringStruct* string, std::uint32_t encoding);
std::uint32_t getEncoding(Core& core, REALstringStruct* string);
REALstringStruct* convertString(Core& core, REALstringStruct* string, std::uint32_t encoding);
void lockString(Core& core, REALstringStruct* string);
void unlockString(Core& core, REALstringStruct* string);
bool getStringData(Core& core, REALstringStruct* string, std::uint32_t encoding, REALstringData* data);
void disposeStringData(Core& core, REALstringData* data);
const char* cString(Core& core, REALstringStruct* string);
std::int32_t stringByteLength(Core& core, REALstringStruct* string);

} // namespace standin
