#include "core/PaintBucket.h"

#include "core/EditOps.h"
#include "core/Image.h"
#include "core/MessageBox.h"
#include "core/PixelFormat.h"
#include "selection/Selection.h"

#include <algorithm>
#include <memory>

namespace vm {

bool PaintBucketAt(CImage& image, CSelection& selection, int32_t x, int32_t y, const BucketOptions& options) {
    const uint32_t format = image.PixelFormat;
    if (format == PixelFormat1bppIndexed) {
        MessageBox(QStringLiteral("不能使用油漆桶工具,因为他不用于位图图像(将图像转换为灰度模式再编辑)."), 0,
                   QString(), ButtonsOk, IconExclamation);
        return false;
    }
    if (format == PixelFormat4bppIndexed || format == PixelFormat8bppIndexed) {
        MessageBox(
            QStringLiteral("不能使用油漆桶工具,因为他不用于索引颜色图像(将图像转换为RGB颜色模式再编辑)."), 0,
            QString(), ButtonsOk, IconExclamation);
        return false;
    }
    if (!image.Pointer()) return false;
    if (!selection.UseDefaultSetting() && !selection.IsPtInSelection(x, y)) return false;

    // What the wand would pick at the click, on a mask of the canvas' size.
    const int32_t width = selection.Pointer() ? selection.Width() : image.Width();
    const int32_t height = selection.Pointer() ? selection.Height() : image.Height();
    CSelection picked;
    if (!picked.CreateNewSelection(width, height)) return false;
    if (!picked.AddMagicWnd(image, x, y, options.Tolerance, options.Contiguous, false)) return false;

    // The fill runs over a limited copy of the document's selection, so the
    // document's own mask is never touched and needs no restoring; the image
    // gets its attached selection back at the end.
    std::unique_ptr<CSelection> limited = selection.CloneSelection();
    if (!limited->PaintBucketSelection(picked)) return false;
    CSelection* attached = image.Selection();
    image.SetSelection(limited.get());

    const int32_t opacity = std::clamp(options.OpacityPercent, 0, 100) * 255 / 100;
    bool done = false;
    if (options.FillContent == 1) {
        CImage picture;
        if (options.Pattern && picture.LoadPictureFromStdPicture(*options.Pattern)) {
            const std::unique_ptr<CImage> tile = picture.GetRGB24Image(0xFFFFFF);
            if (tile && tile->Pointer()) done = FillWithPattern(image, *tile, options.BlendMode, opacity);
        }
    } else {
        done = FillWithColor(image, options.Color, options.BlendMode, opacity);
    }

    image.SetSelection(attached);
    return done;
}

} // namespace vm
