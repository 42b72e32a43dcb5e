// The families of the operation catalogue, in the order their rows are
// gathered: the order in which a function name or a caption finds its first
// row. Each family writes its rows in its own folder; adding a family is its
// line here and nothing else outside its files.
#include "core/Catalogue.h"

// clang-format off
#define VM_CATALOGUE_FAMILIES(Family) \
    Family(AddAdjustRows) \
    Family(AddBlurRows) \
    Family(AddDistortRows) \
    Family(AddStylizeRows) \
    Family(AddRenderRows) \
    Family(AddArtRows) \
    Family(AddNoiseRows) \
    Family(AddSharpenRows) \
    Family(AddPixelizeRows) \
    Family(AddTextureRows) \
    Family(AddOtherRows) \
    Family(AddEditRows) \
    Family(AddImageRows) \
    Family(AddSelectionRows) \
    Family(AddAnalysisRows) \
    Family(AddMakeRows) \
    Family(AddBeautifyRows) \
    /* every line above ends in a backslash, so a family is one line */
// clang-format on

namespace vm {

#define VM_DECLARE_FAMILY(Name) void Name(std::vector<Operation>& Rows);
VM_CATALOGUE_FAMILIES(VM_DECLARE_FAMILY)
#undef VM_DECLARE_FAMILY

std::vector<Operation> GatherFamilyRows() {
    std::vector<Operation> rows;
#define VM_ADD_FAMILY(Name) Name(rows);
    VM_CATALOGUE_FAMILIES(VM_ADD_FAMILY)
#undef VM_ADD_FAMILY
    return rows;
}

} // namespace vm
