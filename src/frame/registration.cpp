#include "frame/registration.h"

#include "frame/host_functions.h"
#include "frame/record_adaptation.h"
#include "operations/inversion.h"
#include "platform/c_library.h"

namespace qvr
{

int32_t CurrentREALControlVersion = 12;

namespace
{

/// The lowest layout with the wide records; below it every definition is converted.
constexpr int32_t firstWideLayout = 10;

/// The address of a handler, whatever its signature.
template <class Handler>
constexpr REALanyFunction address(Handler* handler)
{
    return reinterpret_cast<REALanyFunction>(handler);
}

template <class Handler>
constexpr REALmethodDefinition method(uint32_t flags, Handler* handler, const char* declaration)
{
    return {address(handler), nullptr, declaration, flags, 0, nullptr};
}

template <class Row, int32_t Count>
constexpr int32_t rowCount(Row (&)[Count])
{
    return Count;
}

// clang-format off

REALmethodDefinition pictureMethods[] = {
    method(consoleFlag, InvertPicture, "InvertQVR(left as integer,top as integer,width as integer,height as integer) as picture"),
    method(consoleFlag, InvertPicture2, "InvertQVR as picture"),
    method(consoleFlag, InvertGrayPicture, "InvertGrayQVR(left as integer,top as integer,width as integer,height as integer) as picture"),
    method(consoleFlag, InvertGrayPicture2, "InvertGrayQVR as picture"),
};

// clang-format on

REALclassDefinition pictureExtension = {
    .name = "Picture",
    .methods = pictureMethods,
    .methodCount = rowCount(pictureMethods),
    .flags = 4,
};

using RegisterClass = HostFunction<void(REALclassDefinition*)>;

/// Registers a definition in the announced layout. The host keeps the address it is given, so the older form takes the
/// place of the static record.
void registerClass(REALclassDefinition* definition, RegisterClass& registerDefinition)
{
    if (CurrentREALControlVersion >= firstWideLayout)
        definition->version = CurrentREALControlVersion;
    else
    {
        REALclassDefinition* older = FixClass(definition);
        if (older == nullptr)
            return;
        libc::memcpy(definition, older, static_cast<size_t>(classDefinitionWords) * 4);
        libc::free(older);
    }
    registerDefinition(definition);
}

} // namespace

void registerCatalogue()
{
    FixConsoleFlags(&pictureExtension);
    registerClass(&pictureExtension, host.PluginRegisterClassExtension);
}

} // namespace qvr
