#include "jpeg/block_reader.h"

namespace tessaret::codecs {

BlockReader MakeBlockReader(const DctTables& tables, const ScanComponent& component,
                            const FrameHeader& header) {
  return {RequireTable(tables.huffman.dc, component.dcTable),
          RequireTable(tables.huffman.ac, component.acTable),
          tables.quantisation.Require(header.components[component.index].quantisation)};
}

}  // namespace tessaret::codecs
