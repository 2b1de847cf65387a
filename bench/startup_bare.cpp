#include "first_paint.h"

#include <QMainWindow>

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    quorvel::bench::FirstPaint firstPaint;
    qApp->installEventFilter(&firstPaint);
    QMainWindow window;
    window.resize(820, 620);
    window.show();
    return QApplication::exec();
}
