// The rows of the analysis menu: frequency transforms and filters, edge
// detection, binarisation and its enhancement, segmentation. Their operations
// come with the analysis family. The submenus' own rules (binarisation on grey
// only) stand with the menu entries.
#include "core/Catalogue.h"

namespace vm {

void AddAnalysisRows(std::vector<Operation>& rows) {
    using namespace FormatSet;
    const QString family = QStringLiteral("分析");
    auto add = [&](const char* key, const char* title) {
        rows.push_back(MakeRow(key, title, family, Editable()));
    };
    // On grey pictures these work on the whole picture only.
    auto whole = [&](const char* key, const char* title) {
        rows.push_back(MakeRow(key, title, family, Editable(), Grey()));
    };
    add("FourierTransform", "傅立叶变换");
    add("CosineTransform", "离散余弦变换");
    add("WalshTransform", "沃尔什变换");
    add("HadamardTransform", "哈达玛变换");
    add("IdealLowPass", "理想低通滤波");
    add("IdealHighPass", "理想高通滤波");
    add("ButterworthLowPass", "巴特沃斯低通滤波");
    add("ButterworthHighPass", "巴特沃斯高通滤波");
    add("GaussLowPass", "高斯低通滤波");
    add("GaussHighPass", "高斯高通滤波");

    add("EdgeLaplacian", "拉普拉斯");
    add("EdgeLaplacianEnhance", "增强型拉普拉斯");
    add("EdgeGaussLaplacian", "高斯拉普拉斯");
    add("EdgePrewitt", "蒲瑞维特");
    add("EdgeSobel", "索贝尔");
    add("EdgeRoberts", "罗伯特");
    add("EdgeHorizontal", "水平检测");
    add("EdgeVertical", "垂直检测");
    add("EdgeDifference", "Difference");
    add("EdgeHomogenity", "Homogenity");
    add("EdgeKirsch", "Kirsch");
    add("EdgeRobinson", "Robinson");
    add("EdgeNevitia", "Nevitia");
    add("EdgeCoarse", "粗分δ函数");
    add("EdgeDetail", "细分δ函数");
    // Canny: grey pictures only, and the whole of one.
    rows.push_back(MakeRow("Canny", "Canny算子", family, Grey(), Grey()));

    add("BinaryzationByPTile", "P分位数法");
    add("BinaryzationBestThreshold", "最佳阈值法");
    add("BinaryzationByOTSU", "大律法");
    add("BinaryzationBy1DMaxEntropy", "一维最大熵法");
    add("BinaryzationBySIS", "SIS法");
    add("BinaryzationBySwatanabe", "Swatanabe法");
    add("BinaryzationByBernsen", "Bernsen法");
    add("BinaryzationByNiblack", "Niblack法");
    add("BinaryzationByKamelZhao", "KamelZhao法");
    add("BinaryzationByLEVBB", "LEVBB法");
    add("BinaryzationByHcm", "硬聚类法");

    // Erosion and dilation keep their values with the rank filters'.
    Operation erode = MakeRow("Erode", "腐蚀", family, Editable());
    erode.Section = QStringLiteral("MaxFilter");
    rows.push_back(erode);
    Operation dilate = MakeRow("Dilate", "膨胀", family, Editable());
    dilate.Section = QStringLiteral("MinFilter");
    rows.push_back(dilate);
    add("OpenOperation", "开运算");
    add("CloseOperation", "闭运算");
    add("RemoveIsolatedPoints", "去除孤立点");
    add("FillHoles", "填充孔洞");
    whole("ExtractContour", "轮廓提取");
    whole("ThinHilditch", "Hilditch细化");
    whole("ThinPavlidis", "Pavlidis细化");
    whole("ThinRosenfeld", "Rosenfeld细化");
    whole("Skeleton", "骨架提取");

    add("KMeansCluster", "K均值聚类");
    add("FuzzyCMeansCluster", "模糊C均值聚类");
    add("RegionGrow", "区域生长");
}

} // namespace vm
