#pragma once

namespace quorvel {

struct Program;

// What the menu items open, and what stands under "Tools"; one function and one source file per room.
void openAutoread(Program& program);
void openCalibration(Program& program);
void openGrayscale(Program& program);
void openSettings(Program& program);
void addTools(Program& program);
void showSite(Program& program);
/// "Calibration Record", in the factory edition.
void addCalibrationTool(Program& program);

} // namespace quorvel
