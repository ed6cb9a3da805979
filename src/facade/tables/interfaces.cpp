// Made by scripts/make_interface_tables.py from include/tessaret; not to be edited.
// clang-format off
#include "facade/named_interface.h"
#include "tessaret/idata_set_handle.hpp"
#include "tessaret/idcm_cstore.hpp"
#include "tessaret/idcm_dicom_dir.hpp"
#include "tessaret/idcm_dictionary.hpp"
#include "tessaret/idcm_dictionary_file.hpp"
#include "tessaret/idcm_file.hpp"
#include "tessaret/idcm_object.hpp"
#include "tessaret/idcm_object_manager.hpp"
#include "tessaret/idcm_oblique.hpp"
#include "tessaret/idcm_options.hpp"
#include "tessaret/idcm_query_retrieve.hpp"
#include "tessaret/idcm_store_response.hpp"
#include "tessaret/idcm_verification.hpp"
#include "tessaret/idcm_volume.hpp"
#include "tessaret/iimage_module.hpp"
#include "tessaret/iview_parameters.hpp"
#include "tessaret/ivr_record.hpp"
#include "tessaret/ixdi_consumer.hpp"
#include "tessaret/ixdi_domain.hpp"

namespace tessaret {
namespace {

constexpr NamedInterface kInterfaces[] = {
RowOf<IDispatch>(),
RowOf<IDataSetHandle>(),
RowOf<IDcmCStore>(),
RowOf<IDCMDicomDir>(),
RowOf<IDcmDictionary>(),
RowOf<IDcmDictionaryFile>(),
RowOf<IDcmFile>(),
RowOf<IDCMObject>(),
RowOf<IDcmObjectManager>(),
RowOf<IDCMOblique>(),
RowOf<IDCMOptions>(),
RowOf<IDcmQueryRetrieve>(),
RowOf<IDcmStoreResponse>(),
RowOf<IDcmVerification>(),
RowOf<IDCMVolume>(),
RowOf<IImageModule>(),
RowOf<IViewParameters>(),
RowOf<IVRRecord>(),
RowOf<IXDIConsumer>(),
RowOf<IXDIDomain>(),
};

}  // namespace

std::span<const NamedInterface> AllInterfaces() { return kInterfaces; }

}  // namespace tessaret
