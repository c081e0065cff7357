#include "family/family_members_view.h"
