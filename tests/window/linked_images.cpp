#include "linked_images.h"

QImage LogoSeenFromLibrary()
{
    return QImage(QStringLiteral(":/image/logo.png"));
}
