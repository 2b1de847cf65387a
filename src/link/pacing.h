#pragma once

/// The pace of the bus. The readouts need these pauses; all times are in seconds.
namespace quorvel::link {

inline constexpr float kPauseBeforeFrame = 0.03F;
inline constexpr float kPauseAfterCharacter = 0.005F; ///< the last character of a frame included
inline constexpr float kCharacterTimeout = 2;         ///< for each character of a reply of known length
inline constexpr float kRestTime = 0.05F; ///< for the rest of a reply that did not begin where it should

inline constexpr double kCharacterOnTheWire = 10.0 / 9600; ///< start bit, eight data bits, stop bit

} // namespace quorvel::link
