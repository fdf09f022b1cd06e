#pragma once

#include <QDateTime>
#include <QString>

// Where the pictures of a run go and what they are called.
namespace picturefolder {

// The folder every run gets a folder in unless the photographer names one: "Quendrix" in the
// user's pictures folder.
QString defaultRoot();
// A new, empty folder for a run under root, named by its start ("2026-11-23_14-05-09"; a
// suffix "-2", "-3", ... when a run started in the same second). Empty, with *error set, when
// it cannot be made.
QString makeRunFolder(const QString& root, const QDateTime& start, QString* error);
// Makes dir if it does not exist; refuses a folder that holds anything, so that a run never
// mixes with or overwrites earlier pictures.
bool prepareEmpty(const QString& dir, QString* error);
// "plane-0007.tif": numbered so that the pictures sort in plane order.
QString pictureName(const QString& stem, int number, const QString& suffix);

}  // namespace picturefolder
