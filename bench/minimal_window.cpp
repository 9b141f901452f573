// The least a Qt program does to show a window of the recorder's size: what its start is held
// against.
#include <QApplication>
#include <QWidget>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    window.setFixedSize(1000, 600);
    window.show();
    return QApplication::exec();
}
