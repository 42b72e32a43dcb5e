#pragma once
// Document: one picture being edited, with no window. It owns the image, its
// selection and both history lists, and turns the image's progress events and
// the selection's change events into history steps. A canvas shows one; the
// command-line tool and the tests run commands on one and undo them.
//
// A command that fails with an exception (an allocation that could not be
// served) leaves the document exactly as it was before it: pixels, format,
// palette, the image's fields, the selection and the history lists. The
// exception then goes on to the command boundary, which tells the user.
#include "core/Catalogue.h"
#include "core/Image.h"
#include "core/ImageListener.h"
#include "document/History.h"
#include "selection/Selection.h"

#include <QImage>
#include <QString>

#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

namespace vm {

// What a document tells whoever shows it. Each call comes when the document's
// own data is already up to date.
class IDocumentListener {
  public:
    virtual ~IDocumentListener() = default;
    // Any operation began or ended, restrained ones included: the busy sign.
    virtual void OperationStarted() {}
    virtual void OperationEnded() {}
    // An unrestrained command ended, its step written when the history is on.
    // Kind is the progress kind; ElapsedMs counts from the command's start.
    virtual void CommandFinished(const QString& Name, int Kind, const QString& Extra, int64_t ElapsedMs) {}
    // The selection changed, as a step of its own.
    virtual void SelectionStepFinished(int64_t ElapsedMs) {}
    // Undo or Redo put back a record of this step kind.
    virtual void StepRestored(int32_t StepKind) {}
    // A failed command was taken back: size, mode, pixels and selection may
    // all differ from what was last shown, and no operation is under way.
    virtual void CommandRolledBack() {}
};

class Document : public IImageListener, public ISelectionListener {
  public:
    Document();
    ~Document() override;
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    CImage* Image() const { return image_.get(); }
    CSelection* Selection() const { return selection_.get(); }
    bool HasImage() const { return image_ && image_->Handle(); }
    int32_t Width() const { return image_ ? image_->Width() : 0; }
    int32_t Height() const { return image_ ? image_->Height() : 0; }
    // True when the document differs from its file.
    bool ImageChanged = false;

    // One listener: the view that shows the document. Null for none.
    void SetListener(IDocumentListener* Listener) { listener_ = Listener; }

    // ---- what the document holds
    // Takes Image as the document, with Selection when it has the image's size
    // and a selection of everything otherwise. The history starts empty.
    void Attach(std::unique_ptr<CImage> Image, std::unique_ptr<CSelection> Selection = nullptr);
    // On failure the document is empty.
    bool LoadPictureFromFile(const QString& FileName, int32_t FrameIndex = 0);
    bool LoadPictureFromStdPicture(const QImage& Picture);
    // The document becomes a copy of Other's picture and selection.
    bool CopyFrom(const Document& Other);
    void DisposeAll();

    // ---- commands
    // Runs Work(CImage&) as one command and answers what it answers (true for
    // a Work that answers nothing); false without a picture. Should Work
    // throw, the document is put back as it was and the exception goes on.
    template <class F> bool Run(F&& Work);
    // A catalogue operation with Values, missing keys at their defaults.
    // False when the row has no function yet or the operation refused.
    bool RunOperation(const Operation& Row, const Params& Values = Params());

    // ---- selection commands
    bool SelectAll();
    bool InvertSelect();
    // Lets go of the selection: everything counts again.
    bool CancelSelect();
    // Pictures of other formats are compared by the colours they show.
    bool SelectSimilar(int32_t Tolerance);

    // ---- history
    History& GetHistory() { return history_; }
    const History& GetHistory() const { return history_; }
    bool NeedWriteToHistory() const { return history_.NeedWriteToHistory; }
    void SetNeedWriteToHistory(bool Value) { history_.NeedWriteToHistory = Value; }
    // Off for a caller that throws the document away when a command fails (the
    // command-line tool): no command then keeps a copy to put back.
    void SetTakesBackFailures(bool Value) { takesBackFailures_ = Value; }
    // The kind of the step undone or redone; 0 when there was none.
    int32_t Undo();
    int32_t Redo();
    bool GetUndoState() const { return history_.GetUndoState(); }
    bool GetRedoState() const { return history_.GetRedoState(); }
    void PurgeHistory();

    // ---- events of the image and the selection
    void ProgressStart(bool Restrain, const QString& Name, int Kind) override;
    void ProgressEnd(bool Restrain, const QString& Name, int Kind, const QString& Extra) override;
    void BeforeSelectionChanged(bool Nested) override;
    void SelectionChanged(bool Nested) override;

  private:
    struct Checkpoint;
    // Remembers what a rollback needs. May throw; then nothing has changed.
    // MayAddBase: the first command's base record may serve as the copy.
    void BeginCheckpoint(bool Explicit, bool MayAddBase);
    // Keeps what the command did. DropUnusedBase: a command that wrote no
    // step leaves no base record of its own behind either.
    void CommitCheckpoint(bool DropUnusedBase);
    // Takes away the base record BeginCheckpoint wrote.
    void DropAddedBase() noexcept;
    // Puts everything back as it was at BeginCheckpoint.
    void RollBack() noexcept;
    // A command that died without closing its frame is taken back before
    // anything else touches the document.
    void TakeBackUnfinished() noexcept;
    bool IsUnwinding() const;
    // The data half of a command's end: the step and the new selection of a
    // new size.
    void WriteStep(int Kind);
    int32_t Restore(bool Forward);
    void Detach();

    std::unique_ptr<CImage> image_;
    std::unique_ptr<CSelection> selection_;
    History history_;
    IDocumentListener* listener_ = nullptr;
    std::unique_ptr<Checkpoint> checkpoint_;
    int depth_ = 0; // operations under way, restrained ones included
    bool takesBackFailures_ = true;
    double commandStart_ = 0;
    double selectionStart_ = 0;
};

template <class F> bool Document::Run(F&& work) {
    if (!HasImage()) return false;
    TakeBackUnfinished();
    // A command run inside another belongs to the outer one.
    const bool outer = checkpoint_ == nullptr && takesBackFailures_;
    if (outer) BeginCheckpoint(true, true);
    try {
        bool ok = true;
        if constexpr (std::is_void_v<decltype(std::forward<F>(work)(*image_))>)
            std::forward<F>(work)(*image_);
        else
            ok = static_cast<bool>(std::forward<F>(work)(*image_));
        if (outer) CommitCheckpoint(true);
        return ok;
    } catch (...) {
        if (outer) RollBack();
        throw;
    }
}

} // namespace vm
