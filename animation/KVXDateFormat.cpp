#include "KVXDateFormat.h"

namespace {
const QString kFormat = QStringLiteral("yyyyMMdd");

int digitsAt(const QString& text, int from, int count)
{
    int value = 0;
    for (int i = from; i < from + count; ++i) {
        const ushort c = text.at(i).unicode();
        if (c < '0' || c > '9')
            return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}
} // namespace

QString KVXDateFormat::toText(const QDate& date)
{
    if (!date.isValid() || date.year() < 1000 || date.year() > 9999)
        return date.toString(kFormat);
    const int y = date.year(), m = date.month(), d = date.day();
    const QChar digits[8] = {QChar('0' + y / 1000),     QChar('0' + y / 100 % 10), QChar('0' + y / 10 % 10),
                             QChar('0' + y % 10),       QChar('0' + m / 10),       QChar('0' + m % 10),
                             QChar('0' + d / 10),       QChar('0' + d % 10)};
    return QString(digits, 8);
}

QDate KVXDateFormat::fromText(const QString& text)
{
    if (text.size() == 8) {
        const int y = digitsAt(text, 0, 4), m = digitsAt(text, 4, 2), d = digitsAt(text, 6, 2);
        if (y >= 0 && m >= 0 && d >= 0)
            return QDate(y, m, d);
    }
    return QDate::fromString(text, kFormat);
}
