/// \file
/// Exceptions of the host's language.
#pragma once

#include <stdint.h>

namespace qvr
{

/// Raises a host exception of class `className`, or a "RuntimeException" when the host cannot make one.
///
/// An empty or null message leaves the exception's "Message" a null string. The call returns; the host raises
/// when the handler returns, which therefore ends with its nil or false result.
void RaiseException(const char* className, const char* message, uint32_t errorNumber);

/// Raises the "NilObjectException" that a nil argument gives.
void raiseNilObjectException(const char* message);

} // namespace qvr
