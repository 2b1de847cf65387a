#pragma once

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QDialog>
#include <QLineEdit>
#include <QPlainTextEdit>

namespace quorvel::site {

/// Asks what a site report needs to know from a person. Accepted means that it is to be saved.
class VisitDialog final : public QDialog {
    Q_OBJECT
public:
    /// @param since    from when on changes are listed at first.
    /// @param portOpen  whether readouts can be asked.
    VisitDialog(const QString& person, const QDateTime& since, bool portOpen, QWidget* parent);

    QString person() const { return person_.text().trimmed(); }
    QString remark() const { return remark_.toPlainText().trimmed(); }
    QDateTime since() const { return since_.dateTime(); }
    bool asks() const { return ask_.isChecked(); }

private:
    QLineEdit person_;
    QPlainTextEdit remark_;
    QDateTimeEdit since_;
    QCheckBox ask_;
};

} // namespace quorvel::site
