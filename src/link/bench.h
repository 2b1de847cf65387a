#pragma once

#include <QString>

#include <filesystem>
#include <string>

namespace quorvel::link {

/// Readout types, as the option buttons of the main window number them.
enum InstrumentType : int { TypeA = 1, TypeB = 2, TypeC = 3, TypeD = 4 };

/// What the operator has in front of him: shared by all windows, owned by the program.
struct Bench {
    /// The selected readout type. TypeC is the three-direction readout (X, Y, Z1, Z2), TypeD has X only.
    InstrumentType instrumentType = TypeA;
    /// The text of the main window's address box `TestNo`, as typed: decimal, not checked.
    QString currentAddress;
    /// "X", "Y" or "Z": set before the calibration window is shown.
    QString CalibrationDirection;
    /// "X", "Y", "Z1" or "Z2": set before the grayscale window is shown.
    QString GrayscaleDirection;
    /// "USER" or "FACTORY"; the one difference between the two programs.
    QString edition = QStringLiteral("USER");
    /// Where the calibration files live.
    std::filesystem::path programFolder;
    /// The help text.
    std::filesystem::path helpText;

    bool isUserEdition() const { return edition == QLatin1String("USER"); }
    bool isThreeDirection() const { return instrumentType == TypeC; }
    /// Two hexadecimal digits for frames, made of currentAddress.
    std::string addressDigits() const;
};

} // namespace quorvel::link
