#pragma once

#include <QString>
#include <QStringList>

// Averages pictures of one size pixel by pixel (the noise of the mean falls with the square
// root of their number) and writes the mean to output, its suffix choosing the format. Returns
// an empty text on success, otherwise what went wrong, naming the file. Runs on any thread.
QString averagePictures(const QStringList& pictures, const QString& output);
