#pragma once

namespace quorvel {

/// "USER" or "FACTORY", fixed at build time.
extern const char* const kEdition;

} // namespace quorvel
