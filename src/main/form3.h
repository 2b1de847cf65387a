#pragma once

#include <QDialog>
#include <QPlainTextEdit>
#include <QPushButton>

#include <filesystem>

namespace quorvel {

/// The help viewer: a modal window captioned "Help" that shows a text file. The file is read again on every
/// resize, so that edits made meanwhile are shown.
class Form3 final : public QDialog {
    Q_OBJECT
public:
    /// @param file  UTF-8 text; when it can no longer be read, the reason is shown instead.
    explicit Form3(std::filesystem::path file, QWidget* parent = nullptr);

    /// Empty when the file can be read, otherwise a text that names it and says why and what to do.
    static QString whyUnreadable(const std::filesystem::path& file);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void layOut();
    void readFile();

    std::filesystem::path file_;
    QPlainTextEdit text1_;
    QPushButton command1_;
};

} // namespace quorvel
