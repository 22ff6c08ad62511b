#include "core/api.h"

namespace vsp {

#define VSPSC_EXPORT(family, name) decltype(::name) name;
namespace y8 {
#include "core/exports.def"
}
namespace v3 {
#include "core/exports.def"
}
namespace v4 {
#include "core/exports.def"
}
#undef VSPSC_EXPORT

#define VSPSC_EXPORT(family, name) .name = &y8::name,
const Api kApi_y8 = {
#include "core/exports.def"
};
#undef VSPSC_EXPORT

#define VSPSC_EXPORT(family, name) .name = &v3::name,
const Api kApi_v3 = {
#include "core/exports.def"
};
#undef VSPSC_EXPORT

#define VSPSC_EXPORT(family, name) .name = &v4::name,
const Api kApi_v4 = {
#include "core/exports.def"
};
#undef VSPSC_EXPORT

}  // namespace vsp
