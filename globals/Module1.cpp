#include "globals/Module1.h"

namespace kqu {

Module1Globals Module1;

} // namespace kqu
