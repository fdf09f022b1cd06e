#pragma once

#include <QByteArray>
#include <QString>

namespace quendrix {

// Replaces the contents of the file at `path` in one step: the new contents are written to a
// temporary file beside it, flushed to the disk, and then take the file's place, so that a
// reader, a crash or a killed process finds either the old or the new file, never a mix.
// A symbolic link is followed: its target is replaced. An existing file keeps its permissions.
//
// The temporary file is named after the writing process ("<name>.quendrix-tmp-<pid>"). A writer
// that was killed leaves its temporary file behind; the next write removes every one whose
// process has ended. A normal write leaves nothing behind. The file is not locked: of two
// programs writing it at the same moment, the later replacement wins.
//
// Returns false, with the reason (naming the file) in *error, when the file cannot be written;
// the old file is then left as it was.
bool replaceFile(const QString& path, const QByteArray& contents, QString* error = nullptr);

}  // namespace quendrix
