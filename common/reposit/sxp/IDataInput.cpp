#include "reposit/sxp/IDataInput.h"

#include "reposit/sxp/XMLEscape.h"

#include <QString>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <locale.h>

namespace SXP {

namespace {

    // strtod follows LC_NUMERIC, which a Qt application sets from the environment;
    // XML-RPC numbers always use ".", so conversions run in the "C" locale.
    locale_t cLocale()
    {
        static const locale_t loc = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
        return loc;
    }

} // namespace

long IDataInput::ToLong(const char* text)
{
    // atol itself is undefined on overflow; strtol saturates, which atol does in practice.
    return std::strtol(text, nullptr, 10);
}

int IDataInput::ToInt(const char* text)
{
    // An XML-RPC int is 32 bits. Narrowing the wider result would wrap an out-of-range value
    // into an unrelated one (4294967338 into 42); a 32-bit atol saturates instead. strtoll
    // saturates too, so even an absurdly long number ends up at the right bound.
    const long long wide = std::strtoll(text, nullptr, 10);
    return static_cast<int>(std::clamp<long long>(wide, INT32_MIN, INT32_MAX));
}

double IDataInput::ToDouble(const char* text)
{
    return strtod_l(text, nullptr, cLocale());
}

void IDataInput::Retrieve(int& value)
{
    value = ToInt(Data());
}

void IDataInput::Retrieve(double& value)
{
    value = ToDouble(Data());
}

void IDataInput::Retrieve(QString& value)
{
    value = XMLUnEscape(QString::fromUtf8(Data()));
}

} // namespace SXP
