#include "text_p.h"

#include <charconv>
#include <climits>

namespace TQXmlInternal {

namespace {

int checkedBase(int base) { return base < 2 || base > 36 ? 10 : base; }

// The value of a hexadecimal digit; for other characters a number larger than any base.
int digitOf(char16_t c)
{
    if (c >= u'0' && c <= u'9') {
        return c - u'0';
    }
    if (c >= u'a' && c <= u'f') {
        return c - u'a' + 10;
    }
    if (c >= u'A' && c <= u'F') {
        return c - u'A' + 10;
    }
    return INT_MAX;
}

// The number that plain digits stand for. -1 for other texts, and for so many digits that an int
// might not hold it.
int plainDigits(QStringView text, int base)
{
    constexpr int SAFE_DIGITS = 7;
    if (text.isEmpty() || text.size() > SAFE_DIGITS || base > 16) {
        return -1;
    }
    int value = 0;
    for (const QChar c : text) {
        const int digit = digitOf(c.unicode());
        if (digit >= base) {
            return -1;
        }
        value = value * base + digit;
    }
    return value;
}

bool toNumber(const QString &text, int base, int &value)
{
    bool ok = false;
    const int number = text.toInt(&ok, base);
    value = ok ? number : value;
    return ok;
}

bool toNumber(const QString &text, int base, unsigned int &value)
{
    bool ok = false;
    const unsigned int number = text.toUInt(&ok, base);
    value = ok ? number : value;
    return ok;
}

template<typename T>
bool readChecked(QStringView text, int base, T &value)
{
    const int radix = base == 0 ? 0 : checkedBase(base);  // 0: by the prefix of the text
    const int plain = plainDigits(text, radix);
    if (plain >= 0) {
        value = T(plain);
        return true;
    }
    return !text.isEmpty() && toNumber(text.toString(), radix, value);
}

}  // namespace

bool readNumber(QStringView text, int base, int &value) { return readChecked(text, base, value); }

bool readNumber(QStringView text, int base, unsigned int &value)
{
    return readChecked(text, base, value);
}

// Not QString::number(): it takes four times as long, and on Qt 5 it writes negative numbers as
// two's complement in all bases but ten.
QLatin1String writeNumber(NumberBuffer &buffer, qint64 value, int base)
{
    char *const end = buffer.data() + buffer.size();
    const auto result = std::to_chars(buffer.data(), end, value, checkedBase(base));
    return QLatin1String(buffer.data(), result.ptr);
}

QString numberText(qint64 value, int base)
{
    NumberBuffer buffer;
    return writeNumber(buffer, value, base);
}

}  // namespace TQXmlInternal
