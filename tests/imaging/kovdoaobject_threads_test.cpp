// Rendering from several threads on one imager.
#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <thread>
#include <vector>

#include <KOVDoaHandle/imaging/kovdoaobject.h>

#include "tests/support/bits.h"
#include "tests/support/maps.h"

using namespace testsupport;

TEST(RenderThreads, GiveEachFrameItsOwnPictureOnASharedImager)
{
    const QString former = QDir::currentPath();
    const QTemporaryDir folder;
    QDir::setCurrent(folder.path());
    KOVOFFLineDoaObject imager;
    imager.init(24, 32, 64, 48);
    QDir::setCurrent(former);
    qInstallMessageHandler(nullptr);
    imager.setRadius(20.0F, 64, 48);
    imager.setIsImagerOutSideRadiusShow(true);
    constexpr unsigned threadCount = 4;
    const auto renderOnce = [&](unsigned seed) {
        const Frame frame = makeFrame(24, 32);
        fillWithSources(*frame->ResEngMap, seed);
        const Image image = makeImage(48, 64);
        imager.updateImagerRGB(frame.get(), image.get());
        return bytesOf(*image);
    };
    std::vector<std::vector<unsigned char>> expected, found(threadCount);
    for (unsigned seed = 0; seed < threadCount; ++seed) {
        expected.push_back(renderOnce(seed));
    }

    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < threadCount; ++seed) {
        threads.emplace_back([&, seed] {
            for (int i = 0; i < 50; ++i) {
                found[seed] = renderOnce(seed);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (unsigned seed = 0; seed < threadCount; ++seed) {
        EXPECT_TRUE(samePicture(expected[seed], found[seed], 64)) << "thread " << seed;
    }
}
