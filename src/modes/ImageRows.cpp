// The rows of the Image menu: colour modes, size, trimming and the turns and
// mirrors of the canvas. Their operations come with the modes and geometry.
#include "core/Catalogue.h"

namespace vm {

void AddImageRows(std::vector<Operation>& rows) {
    using namespace FormatSet;
    const QString family = QStringLiteral("图像");
    const std::vector<uint32_t> notOneBit = AllBut({PixelFormat1bppIndexed});
    // A mode is offered where the picture can become it.
    const std::vector<uint32_t> toMany = AllBut({PixelFormat1bppIndexed, PixelFormat16bppRGB555});
    rows.push_back(MakeRow("ChangeToBitMap", "位图", family, {PixelFormat1bppIndexed, PixelFormat8bppGray}));
    rows.push_back(MakeRow("ChangeToGrayMode", "灰度", family, AllBut({PixelFormat16bppRGB555})));
    rows.push_back(MakeRow("ChangeToIndexMode", "索引颜色", family, toMany));
    rows.push_back(MakeRow("ChangeToRGB24Mode", "RGB颜色", family, toMany));
    rows.push_back(MakeRow("ChangeToRGBA32Mode", "RGBA颜色", family, toMany));
    rows.push_back(MakeRow("ImageSize", "图像大小", family));
    {
        Operation op = MakeRow("CropImage", "裁剪", family);
        op.Needs = SelectionNeed::OnCanvas;
        rows.push_back(op);
    }
    rows.push_back(MakeRow("TrimImage", "修整", family, notOneBit));
    rows.push_back(MakeRow("Rotate180", "180度", family));
    rows.push_back(MakeRow("Rotate270", "顺时针90度", family));
    rows.push_back(MakeRow("Rotate90", "逆时针90度", family));
    rows.push_back(MakeRow("Rotate", "任意角度", family, notOneBit));
    rows.push_back(MakeRow("FlipVertical", "水平翻转画布", family));
    rows.push_back(MakeRow("FlipHorizontal", "垂直翻转画布", family));
    rows.push_back(MakeRow("MirrorXLeft", "水平左镜像", family));
    rows.push_back(MakeRow("MirrorXRight", "水平右镜像", family));
    rows.push_back(MakeRow("MirrorYTop", "垂直上镜像", family));
    rows.push_back(MakeRow("MirrorYBottom", "垂直下镜像", family));
}

} // namespace vm
