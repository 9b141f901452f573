#include "app/application_icon.h"

#include <QApplication>
#include <QIcon>

void SetApplicationIcon()
{
    QApplication::setWindowIcon(QIcon(":/image/logo.ico"));
}
