#pragma once

#include "files/result.h"
#include "grayscale/pixelreading.h"

namespace quorvel::grayscale {

/// Writes a reading with what is known about it. A name that ends in ".mdb" gives the database of savePixels(), means
/// rounded; every other name a CSV file:
///
///     # QUORVEL V4.11
///     # address: 5
///     # type: A
///     # direction: X
///     # time: 2026-05-17T09:05:30
///     # readings: 3
///     sn,mm,hd,spread
///     1,-1.785,6,0.58
///
/// `sn` is the pixel's number, `mm` its place, `hd` its brightness, empty for a damaged one, `spread` the standard deviation
/// of several readings. What is not known has no line.
/// @return empty on success, otherwise the reason in words.
QString saveReading(const QString& path, const PixelReading& reading);

/// Reads such a file, or one of savePixels(): an Access database with the table `data`, or CSV with a header row that has
/// `sn` and `hd`. Rows may come in any order; each pixel from 1 to N comes once.
/// @param type       for the places of a file that does not name a type.
/// @return fails with the reason in words: not readable, larger than 4 MB, another table or header row, a row that is not a
///         pixel, a pixel missing or there twice, more than 20000, none.
files::Result<PixelReading> loadReading(const QString& path, link::InstrumentType type);

} // namespace quorvel::grayscale
