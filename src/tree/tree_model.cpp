#include "tree/tree_model.h"

#include "engine/questions.h"

#include "ce/image_list.h"
#include "ce/resource.h"
#include "ce/text.h"

#include <algorithm>
#include <iterator>

HWND gTreeView;
HWND gCommandBands;
HIMAGELIST gTreeImages;
HTREEITEM gRootDatabases;
HTREEITEM gRootFiles;
HTREEITEM gRootRegistry;

namespace {

constexpr WORD TreeBitmap = 101;
constexpr int TreeImageWidth = 32;
constexpr int TreeImageHeight = 15;
constexpr int TreeImageCount = 18;
constexpr COLORREF TransparentColour = 0x00FF00;

constexpr UINT InsertMask = TVIF_TEXT | TVIF_IMAGE | TVIF_PARAM | TVIF_SELECTEDIMAGE;
constexpr UINT RecordMask = TVIF_IMAGE | TVIF_PARAM | TVIF_HANDLE | TVIF_SELECTEDIMAGE;

}  // namespace

const NamedKind* NamedKindOfRoot(WORD code)
{
    const auto* kind = std::ranges::find(NamedKinds, code, &NamedKind::rootCode);
    return kind != std::end(NamedKinds) ? kind : nullptr;
}

const NamedKind* NamedKindOfItem(WORD code)
{
    const auto* kind = std::ranges::find(NamedKinds, code, &NamedKind::itemCode);
    return kind != std::end(NamedKinds) ? kind : nullptr;
}

BOOL ReadTreeItem(HTREEITEM handle, TreeItem& item, bool withText)
{
    TVITEMW record = {};
    record.mask = withText ? RecordMask | TVIF_TEXT : RecordMask;
    record.hItem = handle;
    record.pszText = item.text;
    record.cchTextMax = MAX_PATH;
    item.text[0] = 0;
    if (!handle || !SendMessageW(gTreeView, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&record)))
        return FALSE;
    item.handle = handle;
    item.parameter = record.lParam;
    item.image = record.iImage;
    return TRUE;
}

BOOL WriteTreeItem(const TreeItem& item)
{
    TVITEMW record = {};
    record.mask = RecordMask;
    record.hItem = item.handle;
    record.lParam = item.parameter;
    record.iImage = item.image;
    record.iSelectedImage = item.image;
    return SendMessageW(gTreeView, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&record)) != 0;
}

void SetMark(TreeItem& item, WORD code, WORD markCount)
{
    item.parameter = TreeParameter(code, markCount);
    item.image = markCount ? MarkedImage(code) : UnmarkedImage(code);
}

HTREEITEM InsertTreeItem(HTREEITEM parent, HTREEITEM after, const WCHAR* text, bool withButton, LPARAM parameter,
                         int image)
{
    TVINSERTSTRUCTW insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = after;
    insert.item.mask = withButton ? InsertMask | TVIF_CHILDREN : InsertMask;
    insert.item.pszText = const_cast<WCHAR*>(text);  // only read
    insert.item.cchTextMax = static_cast<int>(wcslen(text));
    insert.item.iImage = image;
    insert.item.iSelectedImage = image;
    insert.item.cChildren = withButton ? 1 : 0;
    insert.item.lParam = parameter;
    return reinterpret_cast<HTREEITEM>(SendMessageW(gTreeView, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
}

HTREEITEM NextTreeItem(WPARAM relation, HTREEITEM item)
{
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(gTreeView, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

DWORD CreateTreeImages()
{
    gTreeImages = ImageList_Create(TreeImageWidth, TreeImageHeight, ILC_MASK, TreeImageCount, 0);
    if (!gTreeImages)
        return 0;
    HBITMAP bitmap = LoadBitmapW(gInstance, MAKEINTRESOURCEW(TreeBitmap));
    ImageList_AddMasked(gTreeImages, bitmap, TransparentColour);
    DeleteObject(bitmap);
    SendMessageW(gTreeView, TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(gTreeImages));
    return 1;
}

DWORD InsertRootItems(HWND)
{
    for (const NamedKind& kind : NamedKinds)
        *kind.root =
            InsertTreeItem(TVI_ROOT, TVI_SORT, kind.rootText, true, TreeParameter(kind.rootCode, 0), kind.rootImage);
    gRootFiles =
        InsertTreeItem(TVI_ROOT, TVI_SORT, u"Files", true, TreeParameter(TreeCodeFilesRoot, 0), ImageFilesRoot);
    gRootRegistry = InsertTreeItem(TVI_ROOT, TVI_SORT, u"Registry", false, TreeParameter(TreeCodeRegistry, 0),
                                   UnmarkedImage(TreeCodeRegistry));
    return 1;
}
