// Creation and destruction of the numeric records. One allocation holds a record's elements; the rows of a
// mat2d are carved out of it, so that code which walks row after row walks through memory in order.
#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/engine/messagehook_p.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

namespace {

// One cache line, and enough for any vector register.
constexpr std::align_val_t elementAlignment{64};

std::size_t countOf(int size)
{
    return size > 0 ? static_cast<std::size_t>(size) : 0;
}

void reportNegative(const char* function, int first, int second)
{
    if (first < 0 || second < 0) {
        reportDoaMessage("containers", __LINE__, function,
                         "a negative size was asked for; the record is empty");
    }
}

// Returns `count` zeroed elements, or null for none.
template <typename Element>
Element* createElements(std::size_t count)
{
    if (count == 0) {
        return nullptr;
    }
    if (count > static_cast<std::size_t>(-1) / sizeof(Element)) {
        throw std::bad_alloc();
    }
    void* storage = ::operator new(count * sizeof(Element), elementAlignment);
    std::memset(storage, 0, count * sizeof(Element));
    return static_cast<Element*>(storage);
}

template <typename Element>
void destroyElements(Element* elements)
{
    ::operator delete(elements, elementAlignment);
}

template <typename Record, typename Element>
Record* createMat1d(int rows, int cols, const char* function)
{
    reportNegative(function, rows, cols);
    auto record = std::make_unique<Record>();
    record->rows = rows;
    record->cols = cols;
    record->data = createElements<Element>(countOf(rows) * countOf(cols));
    return record.release();
}

template <typename Record, typename Element>
Record* createMat2d(int rows, int cols, const char* function)
{
    reportNegative(function, rows, cols);
    auto record = std::make_unique<Record>();
    record->rows = rows;
    record->cols = cols;
    record->data = nullptr;
    if (countOf(rows) == 0) {
        return record.release();
    }
    auto rowPointers = std::make_unique<Element*[]>(countOf(rows));
    Element* elements = createElements<Element>(countOf(rows) * countOf(cols));
    for (std::size_t row = 0; row < countOf(rows); ++row) {
        rowPointers[row] = elements == nullptr ? nullptr : elements + row * countOf(cols);
    }
    record->data = rowPointers.release();
    return record.release();
}

template <typename Record>
void destroyMat1d(Record* record)
{
    if (record != nullptr) {
        destroyElements(record->data);
        delete record;
    }
}

template <typename Record>
void destroyMat2d(Record* record)
{
    if (record != nullptr) {
        if (record->data != nullptr) {
            destroyElements(record->data[0]);
            delete[] record->data;
        }
        delete record;
    }
}

}  // namespace

vec_fp32* create_vec_fp32(int len)
{
    reportNegative(__func__, len, 0);
    auto record = std::make_unique<vec_fp32>();
    record->len = len;
    record->data = createElements<float>(countOf(len));
    return record.release();
}

mat1d_fp32* create_mat1d_fp32(int rows, int cols)
{
    return createMat1d<mat1d_fp32, float>(rows, cols, __func__);
}

mat1d_uint8* create_mat1d_uint8(int rows, int cols)
{
    return createMat1d<mat1d_uint8, std::uint8_t>(rows, cols, __func__);
}

mat1d_short* create_mat1d_short(int rows, int cols)
{
    return createMat1d<mat1d_short, std::int16_t>(rows, cols, __func__);
}

mat2d_fp32* create_mat2d_fp32(int rows, int cols)
{
    return createMat2d<mat2d_fp32, float>(rows, cols, __func__);
}

mat2d_short* create_mat2d_short(int rows, int cols)
{
    return createMat2d<mat2d_short, std::int16_t>(rows, cols, __func__);
}

mat2d_int32* create_mat2d_int32(int rows, int cols)
{
    return createMat2d<mat2d_int32, std::int32_t>(rows, cols, __func__);
}

void destroy_vec_fp32(vec_fp32* vector)
{
    destroyMat1d(vector);
}

void destroy_mat1d_fp32(mat1d_fp32* matrix)
{
    destroyMat1d(matrix);
}

void destroy_mat1d_uint8(mat1d_uint8* matrix)
{
    destroyMat1d(matrix);
}

void destroy_mat1d_short(mat1d_short* matrix)
{
    destroyMat1d(matrix);
}

void destroy_mat2d_fp32(mat2d_fp32* matrix)
{
    destroyMat2d(matrix);
}

void destroy_mat2d_short(mat2d_short* matrix)
{
    destroyMat2d(matrix);
}

void destroy_mat2d_int32(mat2d_int32* matrix)
{
    destroyMat2d(matrix);
}
