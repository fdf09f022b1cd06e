#pragma once

#include <QByteArray>
#include <QString>

// The private-profile (INI) file format, read and written the way the Windows profile
// functions do it, on every platform:
// - section and key names compare without regard to ASCII case; blanks and TABs around them
//   (in the file and in the request) are ignored, inner blanks must match;
// - a line "[S] anything" opens section S; of two blocks with the same section name only the
//   first counts;
// - the nameless section ("") is the part before the first header; when that part holds no
//   key, the block of a "[]" header stands for it;
// - a key line is split at its first "="; blanks and TABs around the value are dropped; a
//   value enclosed in one matching pair of quotes (" or ') comes back without them; a line
//   without "=" is no key; ";" starts no comment; the first of duplicate keys wins;
// - CR LF, LF and CR line ends read the same; the text is Windows-1252, or UTF-8 in a file
//   that begins with the UTF-8 byte-order mark (some editors save files so; the mark stays);
// - a missing file, section or key gives the default with its trailing blanks removed;
//   values and defaults come back cut to 2047 characters (a 2048-character buffer).
// A write changes only the line concerned and keeps every other byte as it was; a missing
// section is appended at the end of the file, a missing key at the end of its section; new
// lines end in CR LF. Every read and every write goes to the file; files are replaced
// atomically, so a crash never leaves half a file.
namespace quendrix::profile {

constexpr int kBufferSize = 2048;  // read buffer; at most kBufferSize - 1 characters come back

// The pure format, on the bytes of a file.
QString readValue(const QByteArray& contents, const QString& section, const QString& key,
                  const QString& defaultValue);
// A write that could not be read back as given is refused: a line break in a name or the
// value, "]" in a section name, "=" in a key name, a key line that would read as a section
// header, or a character the file's encoding cannot hold. The contents then come back unchanged
// and *refusal (when given) says why; it is cleared otherwise.
QByteArray writeValue(const QByteArray& contents, const QString& section, const QString& key,
                      const QString& value, QString* refusal = nullptr);

// On a file. A file that cannot be read counts as missing.
QString readString(const QString& path, const QString& section, const QString& key,
                   const QString& defaultValue);
// Returns false (and the reason, naming the file, in *error) when the file cannot be written,
// when an existing file cannot be read, or when the write is refused; the old file is then
// left byte for byte as it was. *error is cleared on success.
bool writeString(const QString& path, const QString& section, const QString& key,
                 const QString& value, QString* error = nullptr);

}  // namespace quendrix::profile
