#include "console/child_detail_view.h"
