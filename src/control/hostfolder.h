#pragma once

#include <QString>
#include <QStringList>
#include <functional>

// Where the host keeps its files, and which INI file is the component's own.
namespace quendrix {

// The host folder while the component runs inside a designer: the first candidate folder that
// holds an entry, else the component's own folder. On Windows the candidates are the drives
// C to Z, each with the host's folder ":\Pelucido\", and the result keeps the doubled
// backslash after the colon (letter + ":\\Pelucido\"), which the file system accepts.
QString designerHostFolder(const std::function<bool(const QString& folder)>& holdsEntries,
                           const QString& componentFolder);

// The component's INI file for a stored "inifile" value:
// - an empty value means no settings file (empty result);
// - a relative value is taken inside appPath, an absolute one as it stands;
// - when its file name contains no "_", the name is cut before its first "." and the rig type
//   is appended: stem + "_" + Anlage + ".ini", Anlage being the key "Anlage" of section
//   "Arduino" read from the file as named before (default "L"). A name without "." gives an
//   empty stem ("_L.ini"). A name that already contains "_" is kept as it is.
// readAnlage(file) reads that key; it is only called when the name is derived.
QString deriveIniFile(const QString& appPath, const QString& stored,
                      const std::function<QString(const QString& file)>& readAnlage);

}  // namespace quendrix
