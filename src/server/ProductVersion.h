#pragma once

#include <QByteArray>
#include <QString>

// Product versions of the console and of the daemons beside it, read from the
// version metadata embedded in each executable: the version resource of a PE
// image, or the "version" of the package-metadata note (".note.package") that
// the linker writes into an ELF image. Anything else has no version.

// The file's product version; the empty text when it has none or cannot be
// read. An empty path means the console's own executable.
QString GetProductVersion(const QString &path);

namespace ProductVersion {

// The same rules on an image already in memory.
QString fromImage(const QByteArray &image);
// The first non-empty "ProductVersion" of a VS_VERSION_INFO block, in the
// order of its translation table.
QString fromVersionResource(const QByteArray &versionInfo);

// "Service VerList\r\n" and one line per daemon of programDirectory, in the
// About box's order.
QString daemonVersionList(const QString &programDirectory);

} // namespace ProductVersion
