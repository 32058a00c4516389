#include <KOVDoaHandle/api/imager.h>

#include <KOVDoaHandle/imaging/kovdoaobject.h>

KOVOFFLineDoaObject* CreateDoaObject(void)
{
    return new KOVOFFLineDoaObject();
}

void ReleaseDoaObject(KOVOFFLineDoaObject* imager)
{
    delete imager;
}

int DoaObjectInit(KOVOFFLineDoaObject* imager, int mapScaleA, int mapScaleB, int width, int height)
{
    return imager->init(mapScaleA, mapScaleB, width, height);
}

void DoaObjectSetDynamic(KOVOFFLineDoaObject* imager, float dynamic)
{
    imager->setDynamic(dynamic);
}

float DoaObjectGetDynamic(KOVOFFLineDoaObject* imager)
{
    return imager->getDynamic();
}

void DoaObjectSetMinPreSdLever(KOVOFFLineDoaObject* imager, float level)
{
    imager->setMinPreSdLever(level);
}

float DoaObjectGetMinPreSdLever(KOVOFFLineDoaObject* imager)
{
    return imager->getMinPreSdLever();
}

void DoaObjectSetRadius(KOVOFFLineDoaObject* imager, int radius, int p, int q)
{
    imager->setRadius(static_cast<float>(radius), p, q);
}

int DoaObjectGetRadius(KOVOFFLineDoaObject* imager)
{
    return static_cast<int>(imager->getRadius());
}

void DoaObjectSetPalletId(KOVOFFLineDoaObject* imager, int palletId)
{
    imager->setPalletId(static_cast<KOVOFFLineDoaObject::DOA_PALLET_ID>(palletId));
}

int DoaObjectGetPalletId(KOVOFFLineDoaObject* imager)
{
    return imager->getPalletId();
}

void DoaObjectSetCursorNum(KOVOFFLineDoaObject* imager, int count)
{
    imager->setCursorNum(count);
}

int DoaObjectGetCursorNum(KOVOFFLineDoaObject* imager)
{
    return imager->getCursorNum();
}

void DoaObjectSetMultCursorEnable(KOVOFFLineDoaObject* imager, int enable)
{
    imager->setMultCursorEnable(enable == 1);
}

int DoaObjectGetMultCursorEnable(KOVOFFLineDoaObject* imager)
{
    return imager->getMultCursorEnable() ? 1 : 0;
}

void DoaObjectSetIsImagerOutSideRadiusShow(KOVOFFLineDoaObject* imager, int enable)
{
    imager->setIsImagerOutSideRadiusShow(enable == 1);
}

int DoaObjectGetIsImagerOutSideRadiusShow(KOVOFFLineDoaObject* imager)
{
    return imager->getIsImagerOutSideRadiusShow() ? 1 : 0;
}

void DoaObjectSetImageScale(KOVOFFLineDoaObject* imager, float scale)
{
    imager->setImageScale(scale);
}

float DoaObjectGetImageScale(KOVOFFLineDoaObject* imager)
{
    return imager->getImageScale();
}

void DoaObjectUpdateImagerRGB(KOVOFFLineDoaObject* imager, EngMapResult* result, mat1d_uint8* image)
{
    imager->updateImagerRGB(result, image);
}
