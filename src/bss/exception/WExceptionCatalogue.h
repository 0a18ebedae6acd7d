// The catalogue of failures: every exception class that the library throws on purpose.
//
// One declaration is one class and one event: class, code, message, severity, argument types in the order of
// the message's inserts. A new event is one more declaration; its descriptor is in the list of
// WExceptionEventInfo::GetEventInfoList as soon as the module is loaded. A table of them is in
// docs/failure-catalogue.md, which scripts/make-failure-catalogue writes from this file.
//
//     throw bss::WNEFitFailed(L"Nonlinear least squares fit");
//     throw bss::WNEDataIOError(L"while reading", &cause);
//
// Codes: up to 15 the failure model itself, 7000s services outside the process, 10000s inter-process
// communication, 12000s data and system access, 16000s numerics and loading. The log shows code 12000
// as 2.3808: by 4096, and the rest.

#ifndef BSS_EXCEPTION_WEXCEPTIONCATALOGUE_H
#define BSS_EXCEPTION_WEXCEPTIONCATALOGUE_H

#include "bss/Export.h"
#include "bss/exception/WCatalogueException.h"

#include <string>

#ifdef BSS_DEFINE_CATALOGUE
#define BSS_EVENT_DEFINITION(Class)                                                                          \
    Class::~Class() = default; // the class's key function: its type info lives here
#else
#define BSS_EVENT_DEFINITION(Class)
#endif

#define BSS_EVENT(Class, ...)                                                                                \
    BSS_EXCEPTION_CLASS(KRTBSS_API, Class, __VA_ARGS__)                                                      \
    BSS_EVENT_DEFINITION(Class)

namespace bss {

// clang-format off
// NOLINTBEGIN(misc-definitions-in-headers): the destructors are defined where one source asks for them

/// Marks in a chain where a failure begins that happened while the one before it was handled: its class's name.
BSS_EVENT(WNEWhileHandling, 10, L"name- %1", MINOR, std::wstring)
/// A condition of the program does not hold: expression, file, line.
BSS_EVENT(WNEAssertFailed, 11, L"expr- %1 : File- %2 : Line- %3", MINOR, std::wstring, std::wstring, long)
/// The same with a value: expression, file, line, value.
BSS_EVENT(WNEAssertFailed1, 12, L"expr- %1 : File- %2 : Line- %3 : value- %4", MINOR, std::wstring, std::wstring, long, long)
/// A call failed that should not have: expression, file, line.
BSS_EVENT(WNEUnexpectedFailure, 13, L"expr- %1 : File- %2 : Line- %3", MINOR, std::wstring, std::wstring, long)
/// An exception of another kind was caught: its description.
BSS_EVENT(WNEUnexpectedException, 14, L"description- %1", MINOR, std::wstring)
/// A text that should hold serialized exceptions does not: the text, offset of the first wrong character.
BSS_EVENT(WNEInvalidExceptionData, 15, L"data- %1 : offset- %2", MINOR, std::wstring, long)

/// The database has no type for a value: the type's name.
BSS_EVENT(WNEODBCTypeNotSupported, 7006, L"ODBC data type not supported: %1", MAJOR, std::wstring)
/// The database failed: its text.
BSS_EVENT(WNEODBCError, 7007, L"ODBC Error: %1", MAJOR, std::wstring)
/// A compressed file can't be read or written: the reason.
BSS_EVENT(WNECompressionFile, 7010, L"File access error: %1", MAJOR, std::wstring)
/// A socket failed: the system's error number.
BSS_EVENT(WNESocketException, 7020, L"Socket Error: %1", MAJOR, long)

/// The channel between processes failed: message, file, line.
BSS_EVENT(EH_IPCFailure1, 10000, L"Msg- %1 : File- %2 : Line- %3", MINOR, std::wstring, std::wstring, long)
/// The same with a value: message, value, file, line.
BSS_EVENT(EH_IPCFailure2, 10001, L"Msg- %1 : Value- %2 : File- %3 : Line- %4", MINOR, std::wstring, long, std::wstring, long)
/// The channel's transport failed: message, value, file, line.
BSS_EVENT(EH_IPCImpFailure, 10002, L"Msg- %1 : Value- %2 : File- %3 : Line- %4", MINOR, std::wstring, long, std::wstring, long)

/// An object can't be serialized: the reason.
BSS_EVENT(WNESerializerError, 12000, L"Serializer Error: %1", MAJOR, std::wstring)
/// Reading or writing an object failed: what was being done.
BSS_EVENT(WNEDataIOError, 12001, L"Data I/O Error: %1", MAJOR, std::wstring)
/// An index is outside its range: the index.
BSS_EVENT(WNEIndexOutOfRange, 12010, L"Index %1 out of range.", MINOR, long)
/// A registry entry can't be opened: its name.
BSS_EVENT(WNERegistryOpenFAILED, 12021, L"FAILED to open registry entry %1", MINOR, std::wstring)
/// A COM call failed: the call, the description.
BSS_EVENT(WNECOMMethod, 12023, L"COM interface failure: %1\n\n%2", MINOR, std::wstring, std::wstring)
/// A text ended too early.
BSS_EVENT(WNEEndOfString, 12033, L"End of string reached. The string parsing could not be continued.", MINOR)
/// The machine is not set up as needed: what is wrong.
BSS_EVENT(WNESystemConfiguration, 12040, L"description- %1", MAJOR, std::wstring)

/// A library can't be loaded: its name.
BSS_EVENT(WNELoadLibrary, 16000, L"Loading of the library named %1 failed.", MINOR, std::wstring)
/// Memory is short: the module.
BSS_EVENT(WNEMemoryError, 16001, L"Memory allocation error in module %1.", MINOR, std::wstring)
/// A fit found no answer: the module.
BSS_EVENT(WNEFitFailed, 16002, L"Fit failed in module %1.", MINOR, std::wstring)
/// A matrix has no inverse.
BSS_EVENT(WNESingularMatrix, 16003, L"Singular Matrix", MINOR)
/// An equation has no solution, or a series did not converge.
BSS_EVENT(WNENoSolution, 16004, L"No solution to equation.", MINOR)
/// A divisor is zero.
BSS_EVENT(WNEDivideByZero, 16005, L"Attempt to divide by zero.", MINOR)

// NOLINTEND(misc-definitions-in-headers)
// clang-format on

} // namespace bss

#undef BSS_EVENT
#undef BSS_EVENT_DEFINITION

#endif
