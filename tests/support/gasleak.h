// What the tests of the gas-leak mode share. The table is loaded once in a process, so each of their tests needs a
// process of its own, as CTest gives it.
#ifndef KOVDOA_TESTS_SUPPORT_GASLEAK_H
#define KOVDOA_TESTS_SUPPORT_GASLEAK_H

#include <gtest/gtest.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <sys/stat.h>

#include <chrono>
#include <cmath>
#include <string>
#include <thread>

#include <KOVDoaHandle/diagnostics/kovgasleakprocess.h>

namespace testsupport {

class GasLeakProcessOfItsOwn : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_FALSE(KOVGasleakProcessPrivate::g_isIniting || KOVGasleakProcessPrivate::g_isInited)
            << "another test of this process has loaded the table; run one at a time, as ctest does";
        ASSERT_TRUE(m_folder.isValid());
    }

    std::string path(const char* name) const { return m_folder.filePath(QLatin1String(name)).toStdString(); }

    // Writes a table and returns its path.
    std::string table(const QByteArray& text, const char* name = "table.txt") const
    {
        QFile file(QString::fromStdString(path(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(text), text.size());
        return path(name);
    }

    // A pipe: whoever opens it to read waits until somebody opens it to write.
    std::string pipe() const
    {
        const std::string name = path("pipe");
        EXPECT_EQ(mkfifo(name.c_str(), 0600), 0);
        return name;
    }

    static void waitForTable()
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!KOVGasleakProcessPrivate::g_isInited) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the table is never ready";
            std::this_thread::yield();
        }
    }

    // The sound pressure level whose sound power level at a distance is the given one, moved to the middle of its tenth
    // of a decibel so that rounding does not count.
    static float pressureLevel(float powerLevel, float distance)
    {
        constexpr double pi = 3.14159265358979323846;
        const auto metres = static_cast<double>(distance);
        return static_cast<float>(static_cast<double>(powerLevel) + 0.05 -
                                  10.0 * std::log10(4.0 * pi * metres * metres));
    }

private:
    QTemporaryDir m_folder;
};

}  // namespace testsupport

#endif
