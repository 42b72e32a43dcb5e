#pragma once
// The editor's first window: the pictures named on the command line, one a
// tab, drawn through the image object's own Render.
#include "core/Image.h"

#include <QMainWindow>

#include <memory>
#include <vector>

class QTabWidget;

namespace vm {

class PictureView : public QWidget {
    Q_OBJECT
public:
    explicit PictureView(std::unique_ptr<CImage> Image, QWidget* Parent = nullptr);
    const CImage& Picture() const { return *image_; }

protected:
    void paintEvent(QPaintEvent* Event) override;

private:
    std::unique_ptr<CImage> image_;
};

class PictureWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit PictureWindow(QWidget* Parent = nullptr);
    // Opens each file in a tab; with no files, shows our sample picture.
    void OpenFiles(const QStringList& Files);
    bool OpenFile(const QString& File);
    int DocumentCount() const;

private:
    void AddTab(std::unique_ptr<CImage> Image, const QString& Title);
    QTabWidget* tabs_;
};

// A small picture of our own: a hue sweep over a grey ramp with a soft disc of
// partial transparency, 256 x 192, RGBA 32.
std::unique_ptr<CImage> MakeSamplePicture();

} // namespace vm
