#pragma once

class QString;

namespace SXP {

// Character data of an element and its conversions.
class IDataInput {
public:
    virtual ~IDataInput() = default;

    // The character data as zero-terminated UTF-8.
    virtual const char* Data() = 0;

    // Decimal integer in the manner of atol: leading blanks, optional sign, digits;
    // the first other character ends the number and no digits give 0. Values beyond 32 bits
    // saturate at INT32_MAX / INT32_MIN.
    void Retrieve(int& value);
    // Decimal floating point in the manner of atof, always with "." as the separator.
    void Retrieve(double& value);
    // The data decoded from UTF-8 and passed through XMLUnEscape.
    void Retrieve(QString& value);

    static long ToLong(const char* text);
    static int ToInt(const char* text);
    static double ToDouble(const char* text);
};

} // namespace SXP
