// The least a Qt program has to do to show a window of the recorder's size with a line of text.
// The recorder's start is compared with this.
#include <QApplication>
#include <QLabel>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QLabel window("Lumenfold");
    window.setFixedSize(1000, 600);
    window.show();
    return QApplication::exec();
}
