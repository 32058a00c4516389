// The engine is a library of its own, and a host may put functions of its own in the place of the engine's. This
// program defines some of them; the library must call these.
#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <KOVDoaHandle/api/containers.h>
#include <KOVDoaHandle/api/library.h>
#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/foundation/engine/messagehook.h>
#include <KOVDoaHandle/imaging/engmapresult.h>

namespace {

int createdLengths = 0;
int createCalls = 0;
int destroyCalls = 0;
int createMapCalls = 0;
int destroyMapCalls = 0;
DoaMessageHandler installedHandler = nullptr;

}  // namespace

vec_fp32* create_vec_fp32(int len)
{
    createdLengths += len;
    ++createCalls;
    return new vec_fp32{len, new float[static_cast<std::size_t>(len)]()};
}

void destroy_vec_fp32(vec_fp32* vector)
{
    ++destroyCalls;
    delete[] vector->data;
    delete vector;
}

mat2d_fp32* create_mat2d_fp32(int rows, int cols)
{
    ++createMapCalls;
    return new mat2d_fp32{rows, cols, nullptr};
}

void destroy_mat2d_fp32(mat2d_fp32* matrix)
{
    ++destroyMapCalls;
    delete matrix;
}

void InstallDoaMessageHandler(DoaMessageHandler handler)
{
    installedHandler = handler;
}

namespace {

class Interposition : public ::testing::Test
{
protected:
    Interposition() { createdLengths = createCalls = destroyCalls = createMapCalls = destroyMapCalls = 0; }
};

TEST_F(Interposition, ReachesTheContainerExports)
{
    vec_fp32* vector = createVecFp32(12);

    EXPECT_EQ(createCalls, 1);
    EXPECT_EQ(createdLengths, 12);

    destroyVecFp32(vector);
    EXPECT_EQ(destroyCalls, 1);
}

TEST_F(Interposition, ReachesTheFrames)
{
    EngMapResult* frame = createResultHandle(4, 4, 0, 0, 64);

    EXPECT_EQ(createCalls, 1);
    EXPECT_EQ(createdLengths, 33);
    EXPECT_EQ(frame->PowerSpec->len, 33);
    EXPECT_EQ(createMapCalls, 1);

    releaseResultHandle(frame);
    EXPECT_EQ(destroyCalls, 1);
    EXPECT_EQ(destroyMapCalls, 1);
}

TEST_F(Interposition, ReachesTheLogFiles)
{
    const QString former = QDir::currentPath();
    const QTemporaryDir folder;
    QDir::setCurrent(folder.path());

    initLogging();

    qInstallMessageHandler(nullptr);
    QDir::setCurrent(former);
    EXPECT_NE(installedHandler, nullptr);
}

}  // namespace
