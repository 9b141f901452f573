#include "linked_images.h"

#include <QtTest>

// Nothing here refers to qInitResources_drui(): that would link the images and hide that their
// static initializer was dropped.
class LinkedImagesTest : public QObject
{
    Q_OBJECT

private slots:
    void imagesAreThereWithoutAskingForThem()
    {
        const QImage logo = LogoSeenFromLibrary();
        QVERIFY2(!logo.isNull(), "the linker left the images out");
        QCOMPARE(logo.size(), QSize(60, 100));
    }
};

QTEST_GUILESS_MAIN(LinkedImagesTest)
#include "linked_images_test.moc"
