// Fits the mapping between two pictures of the same scene, for example the map and the camera picture.
#ifndef KOVDOA_KOVCALIBRATION_H
#define KOVDOA_KOVCALIBRATION_H

#include <KOVDoaHandle/foundation/kovdoaexport.h>

class KOVDOA_EXPORT KOVCalibration
{
public:
    static void MatInv3x3(double in[3][3], double out[3][3]);
    static void GenConvMat(unsigned int src[16][2], unsigned int dst[16][2], double out[3][2]);
};

#endif
