/// \file
/// The binary interface between the plug-in and its host: opaque handles, the records that cross the boundary
/// and the functions that the host hands out by name. Layouts are in 32-bit words, as both sides agree on
/// them; a record never grows or moves a field, so every offset is asserted here.
#pragma once

#include <stddef.h>
#include <stdint.h>

extern "C" {

/// A host picture; reference-counted by the host.
struct REALpictureStruct;
/// An instance of a class, the plug-in's own included; reference-counted by the host.
struct REALobjectStruct;
/// A host string: bytes with an encoding; reference-counted by the host.
struct REALstringStruct;
/// A block of raw bytes; reference-counted by the host.
struct REALmemoryBlockStruct;
/// The graphics context of a picture; reference-counted by the host.
struct REALgraphicsStruct;

/// Any of the handles above, where the host takes them all.
typedef void* REALobject;

/// A function whose real signature is named where it is called.
typedef void (*REALanyFunction)(void);

/// Maps the name of a host function to its address; null when the host lacks it.
typedef void* (*REALresolver)(const char* name);

/// One method: a global one, one of a class, or one added to a host class.
struct REALmethodDefinition
{
    REALanyFunction handler;
    REALanyFunction setter; ///< null unless the method is assignable
    const char* declaration;
    uint32_t flags;
    int32_t attributeCount;
    const void* attributes;
};

/// One property of a class.
struct REALproperty
{
    const char* group;
    const char* name;
    const char* type;
    uint32_t flags;
    REALanyFunction getter; ///< all bits set: the host reads the field at byte offset `parameter` by itself
    REALanyFunction setter; ///< all bits set: the host writes that field by itself
    intptr_t parameter;
    uint32_t unused[5];
};

/// One named constant of a class; this plug-in has none, but the older record layout narrows the rows.
struct REALconstant
{
    uint32_t words[5];
};

/// A class, or an extension of a host class.
struct REALclassDefinition
{
    int32_t version;
    const char* name;
    const char* superName;
    int32_t dataSize;
    /// Written by the host at registration: byte offset from an instance's address to its instance data.
    intptr_t hostWord;
    REALanyFunction constructor;
    REALanyFunction destructor;
    REALproperty* properties;
    int32_t propertyCount;
    REALmethodDefinition* methods;
    int32_t methodCount;
    void* events;
    int32_t eventCount;
    void* eventInstances;
    int32_t eventInstanceCount;
    const char* interfaces;
    void* bindings;
    int32_t bindingCount;
    REALconstant* constants;
    int32_t constantCount;
    uint32_t flags;
    REALproperty* sharedProperties;
    int32_t sharedPropertyCount;
    REALmethodDefinition* sharedMethods;
    int32_t sharedMethodCount;
    /// Newer hosts look for further tables here; all are empty.
    uint32_t reserved[16];
};

/// How the host describes the pixels of a locked picture.
struct REALpictureDescription
{
    int32_t type; ///< one of REALpictureDescriptionType
    void* data;   ///< GWorld: the GWorldPtr; memory bitmap: the bitmap's words
    int32_t width;
    int32_t height;
    int32_t notRead;
    uint8_t notReadEither;
};

enum REALpictureDescriptionType
{
    pictureGWorldPtr = 4,
    pictureMemoryBitmap = 10,
};

/// 32-bit words of the memory bitmap that a description of type 10 points to.
enum REALmemoryBitmapWord
{
    bitmapKindWord = 0, ///< 0: the bitmap is in memory
    bitmapWidthWord = 1,
    bitmapHeightWord = 2,
    bitmapPresentWord = 1806,  ///< non-null: the bitmap has pixels
    bitmapRowTableWord = 1807, ///< `uint8_t**`, one pointer a row
};

/// The bytes of a host string.
struct REALstringData
{
    void* data;
    int32_t length; ///< in bytes
    uint32_t encoding;
};

} // extern "C"

namespace qvr
{

/// Number of words of a class definition that both record layouts share.
constexpr int classDefinitionWords = 25;

static_assert(sizeof(void*) == 4, "the interface is a 32-bit one");
static_assert(sizeof(REALmethodDefinition) == 6 * 4);
static_assert(sizeof(REALproperty) == 12 * 4);
static_assert(offsetof(REALproperty, getter) == 4 * 4);
static_assert(offsetof(REALproperty, parameter) == 6 * 4);
static_assert(sizeof(REALconstant) == 5 * 4);
static_assert(sizeof(REALclassDefinition) == (classDefinitionWords + 16) * 4);
static_assert(offsetof(REALclassDefinition, hostWord) == 4 * 4);
static_assert(offsetof(REALclassDefinition, properties) == 7 * 4);
static_assert(offsetof(REALclassDefinition, methods) == 9 * 4);
static_assert(offsetof(REALclassDefinition, interfaces) == 15 * 4);
static_assert(offsetof(REALclassDefinition, bindings) == 16 * 4);
static_assert(offsetof(REALclassDefinition, constants) == 18 * 4);
static_assert(offsetof(REALclassDefinition, flags) == 20 * 4);
static_assert(offsetof(REALclassDefinition, sharedMethodCount) == 24 * 4);
static_assert(offsetof(REALpictureDescription, data) == 4);
static_assert(offsetof(REALpictureDescription, height) == 12);
static_assert(sizeof(REALpictureDescription) == 24);
static_assert(sizeof(REALstringData) == 12);

} // namespace qvr
