#include "window/image_lists.h"

#include "window/core.h"
#include "window/images.h"

#include "kernel/handle_table.h"
#include "kernel/mutex.h"

#include "ce/error.h"
#include "ce/image_list.h"
#include "ce/resource.h"

#include <cstring>

namespace platform::window {

namespace {

class ImageList final : public kernel::Object {
public:
    explicit ImageList(ImageSize size) : size_(size) {}

    bool takesCloseHandle() const override { return false; }

    ImageSize size() const { return size_; }

    WORD firstBitmap() const
    {
        const kernel::MutexLock lock(mutex_);
        return firstBitmap_;
    }

    // Returns the index of the first added image.
    [[nodiscard]] int add(WORD bitmap, int images)
    {
        const kernel::MutexLock lock(mutex_);
        if (count_ == 0)
            firstBitmap_ = bitmap;
        const int first = count_;
        count_ += images;
        return first;
    }

private:
    ImageSize size_;
    mutable kernel::Mutex mutex_;
    WORD firstBitmap_ GUARDED_BY(mutex_) = 0;
    int count_ GUARDED_BY(mutex_) = 0;
};

std::shared_ptr<ImageList> findList(HIMAGELIST list)
{
    return kernel::findHandle<ImageList>(list);
}

// Returns the width in pixels. Returns 0 if the bitmap is missing or its resource is too short.
int widthOfBitmap(WORD id)
{
    constexpr std::size_t WidthAt = 4;
    const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(id), MAKEINTRESOURCEW(RT_BITMAP_ID));
    if (!found || SizeofResource(nullptr, found) < WidthAt + sizeof(LONG))
        return 0;
    LONG width = 0;
    std::memcpy(&width, static_cast<const char*>(LoadResource(nullptr, found)) + WidthAt, sizeof width);
    return width;
}

}  // namespace

ImageSize imageSizeOf(HIMAGELIST list)
{
    const auto found = findList(list);
    return found ? found->size() : ImageSize{};
}

WORD firstBitmapOf(HIMAGELIST list)
{
    const auto found = findList(list);
    return found ? found->firstBitmap() : WORD{0};
}

}  // namespace platform::window

using namespace platform::window;

HIMAGELIST ImageList_Create(int width, int height, UINT, int, int)
{
    if (width < 1 || height < 1) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return static_cast<HIMAGELIST>(platform::kernel::addHandle(std::make_shared<ImageList>(ImageSize{width, height})));
}

int ImageList_AddMasked(HIMAGELIST handle, HBITMAP bitmap, COLORREF)
{
    const auto list = findList(handle);
    const WORD id = resourceIdOf(bitmap);
    const int width = id != 0 ? widthOfBitmap(id) : 0;
    if (!list || width <= 0) {
        SetLastError(ERROR_INVALID_HANDLE);
        return -1;
    }
    return list->add(id, width / list->size().width);
}

HBITMAP LoadBitmapW(HINSTANCE instance, const WCHAR* name)
{
    return static_cast<HBITMAP>(LoadImageW(instance, name, IMAGE_BITMAP, 0, 0, 0));
}

// A bitmap's handle contains only the bitmap's resource number, so there is nothing to free.
BOOL DeleteObject(HBITMAP bitmap)
{
    return resourceIdOf(bitmap) != 0 ? TRUE : fail(ERROR_INVALID_HANDLE);
}
