#pragma once

#include "grayscale/grayscale.h"

#include <QString>

namespace quorvel::grayscale {

/// Writes the pixels as table `data`, one row per pixel: `sn` its number from 1 on, `hd` its value. A name that ends in
/// ".csv" (either case) gives a CSV file with the header row "sn,hd", every other name an Access database.
///
/// A file that is there is replaced; it stays as it is until the new one is whole.
/// @return empty on success, otherwise the reason in words; no new file is left then.
QString savePixels(const QString& path, const PixelArray& array);

/// True for names that give a CSV file.
bool isCsvName(const QString& path);

} // namespace quorvel::grayscale
