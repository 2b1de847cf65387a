#include "first_paint.h"

#include "app/edition.h"
#include "app/program.h"

namespace quorvel {

const char* const kEdition = "USER";

} // namespace quorvel

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    quorvel::bench::FirstPaint firstPaint;
    qApp->installEventFilter(&firstPaint);
    quorvel::Program program({}, std::filesystem::current_path(), {}, QString::fromLatin1(quorvel::kEdition));
    program.form1.show();
    return QApplication::exec();
}
