#pragma once

#include <QLabel>

namespace quorvel::grayscale {

/// A label that draws its text without carriage returns, for which fonts have a blank.
class HintLabel final : public QLabel {
    Q_OBJECT
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quorvel::grayscale
