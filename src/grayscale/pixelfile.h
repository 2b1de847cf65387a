#pragma once

#include "protocol/grayscale.h"

#include <QString>

namespace quorvel::grayscale {

using protocol::PixelArray;

/// Writes the pixels as table `data`, one row per pixel: `sn` its number from 1 on, `hd` its value. A name that ends in
/// ".csv" (either case) gives a CSV file with the header row "sn,hd", every other name an Access database.
///
/// A file that is there is replaced; it stays as it is until the new one is whole.
/// @return empty on success, otherwise the reason in words; no new file is left then. The reasons are those of
///         whyNotWritable(), and a disk that is full or gone.
QString savePixels(const QString& path, const PixelArray& array);

/// Whether a file could be written now under this name, be it pixels or a picture; asked before a reading that would be
/// in vain. What is there stays as it is.
/// @return empty when it could. Otherwise the reason in words: something else than a file has that name, the file is
///         write-protected or open in another program, its folder is missing or takes no new file.
QString whyNotWritable(const QString& path);

} // namespace quorvel::grayscale
