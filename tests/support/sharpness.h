#pragma once

#include <QImage>
#include <QList>

// Variance of the Laplacian of the luminance over each tile of a columns x rows grid,
// row by row. The Laplacian is taken at pixels whose four neighbours lie in the picture.
// An empty picture or a grid finer than the picture gives an empty list.
inline QList<double> tileSharpness(const QImage& picture, int columns, int rows) {
    const int width = picture.width(), height = picture.height();
    if (picture.isNull() || columns < 1 || rows < 1 || columns > width || rows > height) return {};
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB888);
    QList<float> luma(qsizetype(width) * height);
    for (int y = 0; y < height; ++y) {
        const uchar* line = rgb.constScanLine(y);
        for (int x = 0; x < width; ++x)
            luma[qsizetype(y) * width + x] =
                0.299f * line[3 * x] + 0.587f * line[3 * x + 1] + 0.114f * line[3 * x + 2];
    }
    QList<double> sums(qsizetype(columns) * rows), squares(sums.size()), counts(sums.size());
    for (int y = 1; y + 1 < height; ++y) {
        const float* at = &luma[qsizetype(y) * width];
        const qsizetype row = qsizetype(y) * rows / height * columns;
        for (int x = 1; x + 1 < width; ++x) {
            const double laplacian =
                at[x - 1] + at[x + 1] + at[x - width] + at[x + width] - 4 * at[x];
            const qsizetype tile = row + qsizetype(x) * columns / width;
            sums[tile] += laplacian;
            squares[tile] += laplacian * laplacian;
            counts[tile] += 1;
        }
    }
    QList<double> variances;
    for (qsizetype i = 0; i < sums.size(); ++i) {
        const double mean = counts[i] > 0 ? sums[i] / counts[i] : 0;
        variances.append(counts[i] > 0 ? squares[i] / counts[i] - mean * mean : 0);
    }
    return variances;
}
