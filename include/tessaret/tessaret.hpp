/// All of Tessaret for a C++ program.
#pragma once

#include "tessaret/calendar.hpp"
#include "tessaret/dispatch.hpp"
#include "tessaret/events.hpp"
#include "tessaret/idata_set_handle.hpp"
#include "tessaret/idcm_dictionary.hpp"
#include "tessaret/idcm_object.hpp"
#include "tessaret/idcm_object_manager.hpp"
#include "tessaret/idcm_options.hpp"
#include "tessaret/ivr_record.hpp"
#include "tessaret/library.hpp"
#include "tessaret/object.hpp"
#include "tessaret/status.hpp"
#include "tessaret/string.hpp"
#include "tessaret/tessaret.h"
#include "tessaret/variant.hpp"
#include "tessaret/version.h"
