#include "changewatch.h"

#include "adaptertype.h"

FormDifference compareWithForm(const AbstractCanAdapter &shown, const AbstractCanAdapter &fromForm)
{
    if (fromForm == shown)
        return FormDifference::None;
    const bool bothOfSystem = typeOf(shown) == AbstractCanAdapter::CanAdapterSocketCan
        && typeOf(fromForm) == AbstractCanAdapter::CanAdapterSocketCan;
    return bothOfSystem ? FormDifference::Applied : FormDifference::Unsaved;
}
