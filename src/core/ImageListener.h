#pragma once
#include <QString>

namespace vm {

// What an operation did to the image, and so what a listener must refresh.
enum ProgressKind : int {
    ProgressPixels = 0,
    ProgressSize = 1,
    ProgressMode = 2,
    ProgressVirtual = 3,
};

// The progress protocol of an image. The owning canvas listens to record
// history and refresh; tests listen to check the nesting.
class IImageListener {
  public:
    virtual ~IImageListener() = default;
    virtual void ProgressStart(bool Restrain, const QString& Name, int Kind) = 0;
    virtual void ProgressEnd(bool Restrain, const QString& Name, int Kind, const QString& Extra) = 0;
};

} // namespace vm
