/// \file
/// The catalogue: every class, method and property that the plug-in adds to the host's language.
#pragma once

#include "abi/host_abi.h"

namespace qvr::frame
{

/// The record layout version that was announced to the host, 9 to 12.
extern int32_t CurrentREALControlVersion;

/// Adapts the catalogue to the host's version and registers it: classes, the extension of "Picture", global
/// methods. A registration function that the host lacks is skipped. Called once.
void registerCatalogue();

} // namespace qvr::frame
