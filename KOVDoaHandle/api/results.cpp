#include <KOVDoaHandle/api/results.h>

#include <memory>

#include <KOVDoaHandle/imaging/engmapresult.h>

EngMapResult* createResultHandle(int resRows, int resCols, int /*imgRows*/, int /*imgCols*/, int fftLen)
{
    // Frees what is there already when memory runs out half-way.
    std::unique_ptr<EngMapResult, decltype(&releaseResultHandle)> result(new EngMapResult(),
                                                                         releaseResultHandle);
    result->ResEngMap = create_mat2d_fp32(resRows, resCols);
    result->PowerSpec = create_vec_fp32((fftLen >> 1) + 1);
    return result.release();
}

void releaseResultHandle(EngMapResult* result)
{
    destroy_mat2d_fp32(result->ResEngMap);
    destroy_vec_fp32(result->PowerSpec);
    delete result;
}

mat2d_fp32* getResEngMap(EngMapResult* result)
{
    return result->ResEngMap;
}

vec_fp32* getPowerSpec(EngMapResult* result)
{
    return result->PowerSpec;
}

fpoint2d getMaxSpl(EngMapResult* result)
{
    return result->maxSpl;
}

fpoint2d getMinSpl(EngMapResult* result)
{
    return result->minSpl;
}

fpoint2d getMaxSplExtern(EngMapResult* result)
{
    return result->maxSplExtern;
}

fpoint2d getMinSplExtern(EngMapResult* result)
{
    return result->minSplExtern;
}

float getMedian(EngMapResult* result)
{
    return result->median;
}

float getDistance(EngMapResult* result)
{
    return result->distance;
}

int getPeaksNum(EngMapResult* result)
{
    return static_cast<int>(result->peaks.size());
}

fpoint2d getPeaksValue(EngMapResult* result, int index)
{
    // "Greater than", not "greater or equal": an index equal to the count passes and reads behind the last
    // peak. Hosts have relied on the exact bound, so the access must stay unchecked too.
    if (index < 0 || index > getPeaksNum(result)) {
        return {};
    }
    const TargetPoint& peak = result->peaks.data()[index];
    return {peak.value, peak.row, peak.col};
}
