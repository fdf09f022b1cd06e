#pragma once

#include <QByteArray>
#include <QString>

// The private-profile (INI) file format, read and written the way the Windows profile
// functions do it, on every platform:
// - section and key names compare without regard to ASCII case; blanks and TABs around them
//   (in the file and in the request) are ignored, inner blanks must match;
// - a line "[S] anything" opens section S; keys before the first section header belong to a
//   nameless section (""); of two blocks with the same section name only the first counts;
// - a key line is split at its first "="; blanks and TABs around the value are dropped; a
//   value enclosed in one matching pair of quotes (" or ') comes back without them; a line
//   without "=" is no key; ";" starts no comment; the first of duplicate keys wins;
// - CR LF, LF and CR line ends read the same; the text is Windows-1252;
// - a missing file, section or key gives the default with its trailing blanks removed;
//   values and defaults come back cut to 2047 characters (a 2048-character buffer).
// A write changes only the line concerned and keeps every other byte as it was; a missing
// section is appended at the end of the file, a missing key at the end of its section;
// new lines end in CR LF. Files are replaced atomically, so a crash never leaves half a file.
namespace quendrix::profile {

constexpr int kBufferSize = 2048;  // read buffer; at most kBufferSize - 1 characters come back

// The pure format, on the bytes of a file. CR and LF in a value to write become blanks. Names
// that would not read back as written (a line break, "]" in a section name, "=" in a key name,
// a key that reads as a section header) are not written: the contents come back unchanged.
QString readValue(const QByteArray& contents, const QString& section, const QString& key,
                  const QString& defaultValue);
QByteArray writeValue(const QByteArray& contents, const QString& section, const QString& key,
                      const QString& value);

// On a file. A file that cannot be read counts as missing.
QString readString(const QString& path, const QString& section, const QString& key,
                   const QString& defaultValue);
// Returns false (and the reason in *error) when the file cannot be written, when an existing
// file cannot be read, or when a name cannot be stored; the old file is then left as it was.
// *error is cleared on success.
bool writeString(const QString& path, const QString& section, const QString& key,
                 const QString& value, QString* error = nullptr);

}  // namespace quendrix::profile
