#include "linked_images.h"

#include <QtTest>

// Here no one names qInitResources_drui(): a reference to it would pull the images into the program
// and hide that their own static initializer was left out.
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
