#pragma once

#include <QString>

class QPrinter;
class QWidget;

namespace quorvel {

/// A file that the operator is asked to choose.
struct FileChoice {
    QString caption;
    QString filter; ///< as Qt writes it, "Database file(*.mdb)"; empty for none
    bool toSave = false;
    QString proposed = {}; ///< a path or name that stands in the dialog at first; empty for none
};

/// The seam for everything that asks the operator something in a box of its own. Windows are given one;
/// the real one shows Qt's boxes, a test answers in its place.
class Messages {
public:
    Messages() = default;
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;
    virtual ~Messages() = default;

    /// A message box with OK; returns when it is closed.
    virtual void say(QWidget* parent, const QString& text) = 0;
    /// A question with Yes and No. @return true for Yes; closing the box is No.
    virtual bool ask(QWidget* parent, const QString& text) = 0;
    /// As ask(), but Enter answers No: for a question whose Yes loses something for good.
    virtual bool askToLose(QWidget* parent, const QString& text) { return ask(parent, text); }
    /// The result box `msgboxnew` with its two lines.
    virtual void showResult(QWidget* parent, const QString& firstLine, const QString& secondLine) = 0;
    /// A file dialog in which any name may be typed, whether or not the file exists; it does not ask about
    /// overwriting. @return the path, empty when cancelled.
    virtual QString chooseFile(QWidget* parent, const FileChoice& choice) = 0;
    /// One line of text. @return empty when cancelled.
    virtual QString askText(QWidget* parent, const QString& caption, const QString& label) = 0;
    /// Lets a printer be chosen, and the page set up. @return false when cancelled; always where there is no dialog for it.
    virtual bool choosePrinter(QWidget* /*parent*/, QPrinter& /*printer*/) { return false; }
};

inline constexpr auto kPortNotOpened = "CommPort not Opened";

/// Asks for the database file to write; the name may be new. @return the path, empty when cancelled.
QString ChooseDatabaseFile(Messages& messages, QWidget* parent);
/// Asks for the picture file to write; the name may be new. @return the path, empty when cancelled.
QString SaveChartImage(Messages& messages, QWidget* parent);
/// True when nothing has the name `path`, or the operator agrees to overwrite it. Deletes nothing.
bool mayWrite(Messages& messages, QWidget* parent, const QString& path);

} // namespace quorvel
