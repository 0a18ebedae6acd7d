// Catches failures of the library by type, across the module's border, and uses each kind of header that is
// installed. Exit status 0 if all is as it should be; otherwise the number of the line that is not.
//
// The headers of ODBC come first here and last in second.cpp: they define BOOL, ULONG, WCHAR and others on
// Linux.

#ifdef _WIN32
#include <windows.h>
#endif
#include <sql.h>
#include <sqlext.h>

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/exception/WFileEventLog.h"
#include "bss/math/WLinearLeastSquaresFit.h"
#include "bss/math/WMathUtil.h"
#include "bss/math/model/WBroadeningFunction.h"
#include "bss/math/model/WPolynomialFunction.h"
#include "bss/net/WSystemTimeEx.h"
#include "bss/serial/WBinarySerializer.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "bss/system/WCompression.h"
#include "bss/system/WEncryption.h"
#include "bss/system/WVersionResource.h"
#include "bss/system/des.h"

#include <iostream>
#include <sstream>

#define REQUIRE(condition)                                                                                   \
    if (!(condition)) {                                                                                      \
        std::cerr << "line " << __LINE__ << ": " #condition "\n";                                            \
        return __LINE__ & 0xff;                                                                              \
    }

/// Whether `call` throws an Event that the handler of just this class catches.
template <class Event, class Call>
bool Catches(Call call) {
    try {
        call();
    } catch (const Event&) {
        return true;
    } catch (...) {
        return false;
    }
    return false;
}

class Angle : public bss::WPersistentObject {
public:
    explicit Angle(double angle) : WPersistentObject(1, 2, bss::WVersion(5, 4, 0, 0)), m_fAngle(angle) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        bRead ? m_pSerializer->Retrieve(L"m_fAngle", m_fAngle) : m_pSerializer->Insert(L"m_fAngle", m_fAngle);
    }
    double m_fAngle;
};

/// In second.cpp: the year of a time stamp, through the system's type.
int YearOf(const bss::WSystemTimeEx& time);

int main() {
    REQUIRE(YearOf(bss::WSystemTimeEx(44621.0)) == 2022) // an OLE date
    REQUIRE(Catches<bss::WNEDivideByZero>([] { bss::WBroadeningFunction().Evaluate(1.0); }))
    REQUIRE(Catches<bss::WNestedException>([] { bss::WBroadeningFunction().Evaluate(1.0); }))
    REQUIRE(Catches<bss::WNENoSolution>([] {
        double r1 = 0;
        double r2 = 0;
        bss::WMathUtil::QuadraticRoots(1.0, 0.0, 1.0, r1, r2);
    }))
    REQUIRE(Catches<bss::WNEFitFailed>([] {
        bss::WLinearLeastSquaresFit fit;
        fit.InitializeFit();
        fit.PerformFit();
    }))
    REQUIRE(
        Catches<bss::WNECompressionFile>([] { bss::WCompression::Compress(nullptr, nullptr, nullptr, 0); }))
    // The version resource that the package's CMake function gave this program; pkg-config has none to give.
    const bss::WVersionResource version(nullptr);
#ifdef CONSUMER_HAS_VERSION
    REQUIRE(version.GetModuleVersion() == std::wstring(L"2.3.4.5"))
    REQUIRE(version.GetProductName() == std::wstring(L"A stranger's \"program\""))
    REQUIRE(version.GetKRTFileVer() == std::wstring(L"5.3.2.0"))
    REQUIRE(version.GetFileType() == std::wstring(L"Application"))
#else
    REQUIRE(version.GetModuleVersion() == std::wstring())
#endif
    // Data and plain names of the module.
    unsigned char block[8] = {'c', 'o', 'n', 's', 'u', 'm', 'e', 'r'};
    des3key(bss::WEncryption::m_Key, 0);
    Ddes(block, block);
    REQUIRE(bss::WEncryption::Decrypt(std::string(block, block + 8)) == "consumer")
    // A persistent class of another module, written and read by the library.
    Angle angle(90.0);
    bss::WBinarySerializer serializer(false, true);
    angle.Write(&serializer, 0, true);
    angle.m_fAngle = 0.0;
    angle.Read(&serializer, 0, true);
    REQUIRE(angle.m_fAngle == 90.0 && angle.GetNameOfClass() == L"Angle")
    // Thrown inside the module from text, caught here by type.
    REQUIRE(Catches<bss::WNESocketException>([] {
        std::wstring record = L"7020,WNESocketException,,MAJOR   ,10061,,,,,,,,";
        for (wchar_t& c : record) {
            c = c == L',' ? L'\0' : c;
        }
        bss::WNestedExceptionData data(record.data());
        bss::WExceptionEventInfo::ThrowFromList(data, nullptr);
    }))
    // Thrown and caught here, logged by the library.
    std::wostringstream text;
    try {
        const bss::WNEODBCError cause(L"locked");
        throw bss::WNEDataIOError(L"writing", &cause);
    } catch (const bss::WNestedException& e) {
        bss::WFileEventLog log(text, L"consumer");
        e.Log(log);
    }
    REQUIRE(text.str().find(L"1.2911 WNEODBCError           : ODBC Error: locked\n") != std::wstring::npos)

    REQUIRE(bss::WSystemTimeEx().GetYear() >= 2000)
    std::cout << "consumer: all is as it should be\n";
}
