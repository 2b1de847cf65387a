#pragma once

namespace quorvel {

struct Workplace;

// What the menu items open; one function and one source file per room.
void openAutoread(Workplace& workplace);
void openCalibration(Workplace& workplace);
void openGrayscale(Workplace& workplace);

void openSettings(Workplace& workplace);

} // namespace quorvel
