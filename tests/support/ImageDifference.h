#pragma once

#include <QImage>

#include <cstdlib>

// The mean difference of two pictures' colour channels, 0 (the same) to 255;
// 255 for pictures of different sizes or none.
inline double imageDifference(const QImage& a, const QImage& b)
{
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32);
    if (x.isNull() || x.size() != y.size())
        return 255.0;
    double sum = 0.0;
    for (int row = 0; row < x.height(); ++row)
        for (int column = 0; column < x.width(); ++column) {
            const QRgb p = x.pixel(column, row), q = y.pixel(column, row);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    return sum / (3.0 * x.width() * x.height());
}
