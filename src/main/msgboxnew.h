#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class msgboxnew;
}

namespace quorvel {

/// The result box: a modal window captioned "Set Result" with two lines of text, for results that do not fit
/// a message box. Set both lines before showing it.
class msgboxnew final : public QDialog {
    Q_OBJECT
public:
    explicit msgboxnew(QWidget* parent = nullptr);
    ~msgboxnew() override;

    void setFirstLine(const QString& text) { firstLine_ = text; }
    void setSecondLine(const QString& text) { secondLine_ = text; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    std::unique_ptr<Ui::msgboxnew> ui_;
    QString firstLine_;
    QString secondLine_;
};

} // namespace quorvel
