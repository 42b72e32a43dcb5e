#pragma once
// The catalogue rows against the settings store: what a filter dialog opens
// with, what its OK stores, and what the repeat command ("上次滤镜操作") reads,
// each exactly as the row declares it, quirks included.
#include "core/Catalogue.h"

#include <QPoint>

namespace vm {

// The middle of the selection's bound, in image coordinates: where a filter
// with a centre starts. The whole picture's middle when everything is selected.
QPoint SelectionCentre(const CImage& Image);

// The values a dialog opens with: each parameter from the row's section with
// the row's default, a slider's value held to its range for this picture (a
// stored value outside shows the nearest end), centres from the selection.
Params LoadStoredParams(const Operation& Op, const CImage& Image);

// The values the repeat command runs with: each parameter as the repeat reads
// it (another section or key, or a default of its own, where the row says so),
// not held to any range, and centres from the selection's bound.
Params ReadRepeatParams(const Operation& Op, const CImage& Image);

// What OK stores: every parameter of the row under its section as a whole
// number (texts as they are), but the keys the row keeps, which are written
// back with the value they had. Centres are not stored.
void StoreParams(const Operation& Op, const Params& Values);

// The row the repeat command finds for a caption: the first whose command name
// is the caption, else the first whose dialog shows it. Null for none.
const Operation* FindOperationByCaption(const QString& Caption);

} // namespace vm
