#include "app/PictureWindow.h"

#include "core/FileFamilies.h"
#include "core/MessageBox.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QPainter>
#include <QScrollArea>
#include <QTabWidget>

#include <cmath>

namespace vm {

PictureView::PictureView(std::unique_ptr<CImage> image, QWidget* parent) : QWidget(parent), image_(std::move(image)) {
    setFixedSize(image_->Width(), image_->Height());
}

void PictureView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    // Transparent parts over a checkerboard, as an editor shows them.
    const int cell = 8;
    for (int y = 0; y < height(); y += cell)
        for (int x = 0; x < width(); x += cell)
            p.fillRect(x, y, cell, cell, ((x / cell + y / cell) & 1) ? QColor(0xC0, 0xC0, 0xC0) : Qt::white);
    image_->Render(p, 0, 0);
}

PictureWindow::PictureWindow(QWidget* parent) : QMainWindow(parent), tabs_(new QTabWidget(this)) {
    setWindowTitle(QStringLiteral("Osier VelluMark 2.0"));
    tabs_->setDocumentMode(true);
    tabs_->setTabsClosable(true);
    connect(tabs_, &QTabWidget::tabCloseRequested, this, [this](int i) {
        QWidget* w = tabs_->widget(i);
        tabs_->removeTab(i);
        delete w;
    });
    setCentralWidget(tabs_);
    QMenu* file = menuBar()->addMenu(QStringLiteral("文件(&F)"));
    file->addAction(QStringLiteral("打开(&O)..."), QKeySequence::Open, this, [this] {
        QStringList filters;
        for (const FileFilter& f : OpenFilterList()) filters << f.QtFilter();
        const QStringList files =
            QFileDialog::getOpenFileNames(this, QStringLiteral("打开"), QString(), filters.join(QStringLiteral(";;")));
        for (const QString& f : files) OpenFile(f);
    });
    file->addSeparator();
    file->addAction(QStringLiteral("退出(&X)"), QKeySequence::Quit, this, &QWidget::close);
    resize(900, 650);
}

void PictureWindow::OpenFiles(const QStringList& files) {
    for (const QString& f : files) OpenFile(f);
    if (files.isEmpty()) AddTab(MakeSamplePicture(), QStringLiteral("示例"));
}

bool PictureWindow::OpenFile(const QString& file) {
    auto image = std::make_unique<CImage>();
    if (!image->LoadPictureFromFile(file)) {
        MessageBox(QStringLiteral("无法完成请求，因为他不是所指类型的文档."));
        return false;
    }
    AddTab(std::move(image), QFileInfo(file).fileName());
    return true;
}

int PictureWindow::DocumentCount() const { return tabs_->count(); }

void PictureWindow::AddTab(std::unique_ptr<CImage> image, const QString& title) {
    auto* scroll = new QScrollArea;
    scroll->setAlignment(Qt::AlignCenter);
    scroll->setBackgroundRole(QPalette::Dark);
    scroll->setWidget(new PictureView(std::move(image)));
    tabs_->setCurrentIndex(tabs_->addTab(scroll, title));
}

std::unique_ptr<CImage> MakeSamplePicture() {
    auto image = std::make_unique<CImage>();
    const int w = 256, h = 192;
    image->CreateNewImage(w, h, 32);
    for (int y = 0; y < h; ++y) {
        uint8_t* row = image->Row(y);
        for (int x = 0; x < w; ++x) {
            const double hue = 6.0 * x / w;
            const double light = 1.0 - static_cast<double>(y) / h;
            const int sector = static_cast<int>(hue) % 6;
            const double f = hue - std::floor(hue);
            double r = 0, g = 0, b = 0;
            switch (sector) {
            case 0: r = 1, g = f; break;
            case 1: r = 1 - f, g = 1; break;
            case 2: g = 1, b = f; break;
            case 3: g = 1 - f, b = 1; break;
            case 4: r = f, b = 1; break;
            default: r = 1, b = 1 - f; break;
            }
            const double dx = x - w / 2.0, dy = y - h / 2.0;
            const double d = std::sqrt(dx * dx + dy * dy);
            const int alpha = d < 40 ? 96 : (d < 56 ? static_cast<int>(96 + (d - 40) * 159 / 16) : 255);
            row[4 * x] = static_cast<uint8_t>(255 * (b * light + (1 - light) * 0.1));
            row[4 * x + 1] = static_cast<uint8_t>(255 * (g * light + (1 - light) * 0.1));
            row[4 * x + 2] = static_cast<uint8_t>(255 * (r * light + (1 - light) * 0.1));
            row[4 * x + 3] = static_cast<uint8_t>(alpha);
        }
    }
    return image;
}

} // namespace vm
