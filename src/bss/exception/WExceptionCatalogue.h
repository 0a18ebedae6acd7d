// The catalogue of failures: all exception classes that the library throws on purpose.
//
// One BSS_EVENT declares one class and its event: class, code, message, severity, and the argument types in
// the order of the message's inserts. Loading the module registers the descriptors in the list of
// WExceptionEventInfo::GetEventInfoList. scripts/make-failure-catalogue writes docs/failure-catalogue.md, a
// table of the events, from this file; the `///` comment of an event is its meaning there.
//
//     throw bss::WNEFitFailed(L"Nonlinear least squares fit");
//     throw bss::WNEDataIOError(L"while reading", &cause);
//
// Codes: up to 15 the failure model itself, 7000s services outside the process, 10000s inter-process
// communication, 12000s data and system access, 16000s numerics and loading. The log shows code 12000 as
// 2.3808: the quotient by 4096, a point, and the remainder.
//
// Each class has a constructor with the arguments and an optional cause, GetArgument<index>(), and the
// operations of WNestedException. Constructing an object throws std::bad_alloc if memory is short.
//
// Threads: one exception object, one thread at a time; the classes have no other shared state.

#ifndef BSS_EXCEPTION_WEXCEPTIONCATALOGUE_H
#define BSS_EXCEPTION_WEXCEPTIONCATALOGUE_H

#include "bss/Export.h"
#include "bss/exception/WCatalogueException.h"

#include <string>

#ifdef BSS_DEFINE_CATALOGUE
#define BSS_EVENT_DEFINITION(Class)                                                                          \
    Class::~Class() = default; // the key function: its source holds the type info
#else
#define BSS_EVENT_DEFINITION(Class)
#endif

#define BSS_EVENT(Class, ...)                                                                                \
    BSS_EXCEPTION_CLASS(KRTBSS_API, Class, __VA_ARGS__)                                                      \
    BSS_EVENT_DEFINITION(Class)

namespace bss {

// clang-format off
// NOLINTBEGIN(misc-definitions-in-headers): one source defines BSS_DEFINE_CATALOGUE and so the destructors

/// Marks the next link as an exception that occurred while the links before were handled: the next link's class.
BSS_EVENT(WNEWhileHandling, 10, L"name- %1", MINOR, std::wstring)
/// An assertion of the program failed: expression, file, line.
BSS_EVENT(WNEAssertFailed, 11, L"expr- %1 : File- %2 : Line- %3", MINOR, std::wstring, std::wstring, long)
/// An assertion of the program failed: expression, file, line, value.
BSS_EVENT(WNEAssertFailed1, 12, L"expr- %1 : File- %2 : Line- %3 : value- %4", MINOR, std::wstring, std::wstring, long, long)
/// A call failed unexpectedly: expression, file, line.
BSS_EVENT(WNEUnexpectedFailure, 13, L"expr- %1 : File- %2 : Line- %3", MINOR, std::wstring, std::wstring, long)
/// An exception of a foreign class was caught: its description.
BSS_EVENT(WNEUnexpectedException, 14, L"description- %1", MINOR, std::wstring)
/// A text of serialized exceptions is malformed: the text, the offset of the first invalid character.
BSS_EVENT(WNEInvalidExceptionData, 15, L"data- %1 : offset- %2", MINOR, std::wstring, long)

/// The database does not support a data type: the name of the type.
BSS_EVENT(WNEODBCTypeNotSupported, 7006, L"ODBC data type not supported: %1", MAJOR, std::wstring)
/// The database reported an error: its text.
BSS_EVENT(WNEODBCError, 7007, L"ODBC Error: %1", MAJOR, std::wstring)
/// A compressed file can't be read or written: the reason.
BSS_EVENT(WNECompressionFile, 7010, L"File access error: %1", MAJOR, std::wstring)
/// A socket operation failed: the system's error number.
BSS_EVENT(WNESocketException, 7020, L"Socket Error: %1", MAJOR, long)

/// Inter-process communication failed: message, file, line.
BSS_EVENT(EH_IPCFailure1, 10000, L"Msg- %1 : File- %2 : Line- %3", MINOR, std::wstring, std::wstring, long)
/// Inter-process communication failed: message, value, file, line.
BSS_EVENT(EH_IPCFailure2, 10001, L"Msg- %1 : Value- %2 : File- %3 : Line- %4", MINOR, std::wstring, long, std::wstring, long)
/// The transport of inter-process communication failed: message, value, file, line.
BSS_EVENT(EH_IPCImpFailure, 10002, L"Msg- %1 : Value- %2 : File- %3 : Line- %4", MINOR, std::wstring, long, std::wstring, long)

/// An object can't be serialized: the reason.
BSS_EVENT(WNESerializerError, 12000, L"Serializer Error: %1", MAJOR, std::wstring)
/// Reading or writing an object failed: the operation.
BSS_EVENT(WNEDataIOError, 12001, L"Data I/O Error: %1", MAJOR, std::wstring)
/// An index is outside its range: the index.
BSS_EVENT(WNEIndexOutOfRange, 12010, L"Index %1 out of range.", MINOR, long)
/// A registry entry can't be opened: its name.
BSS_EVENT(WNERegistryOpenFAILED, 12021, L"FAILED to open registry entry %1", MINOR, std::wstring)
/// A COM call failed: the call, the description.
BSS_EVENT(WNECOMMethod, 12023, L"COM interface failure: %1\n\n%2", MINOR, std::wstring, std::wstring)
/// A text ended before parsing was complete.
BSS_EVENT(WNEEndOfString, 12033, L"End of string reached. The string parsing could not be continued.", MINOR)
/// The machine's configuration is unsuitable: a description.
BSS_EVENT(WNESystemConfiguration, 12040, L"description- %1", MAJOR, std::wstring)

/// A library can't be loaded: its name.
BSS_EVENT(WNELoadLibrary, 16000, L"Loading of the library named %1 failed.", MINOR, std::wstring)
/// A memory allocation failed: the module.
BSS_EVENT(WNEMemoryError, 16001, L"Memory allocation error in module %1.", MINOR, std::wstring)
/// A fit did not converge or has no complete data: the module or the reason.
BSS_EVENT(WNEFitFailed, 16002, L"Fit failed in module %1.", MINOR, std::wstring)
/// A matrix is singular.
BSS_EVENT(WNESingularMatrix, 16003, L"Singular Matrix", MINOR)
/// An equation has no solution, or a series did not converge.
BSS_EVENT(WNENoSolution, 16004, L"No solution to equation.", MINOR)
/// A divisor is exactly zero.
BSS_EVENT(WNEDivideByZero, 16005, L"Attempt to divide by zero.", MINOR)

// NOLINTEND(misc-definitions-in-headers)
// clang-format on

} // namespace bss

#undef BSS_EVENT
#undef BSS_EVENT_DEFINITION

#endif
