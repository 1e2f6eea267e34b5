// Floor 3.14 - simulator: expectation profiles and single-voxel signals
#pragma once

namespace kor {

int KORWriteExpectationProfile(const char* density_path, const char* operator_expression,
                               const char* output_path);
int KORWriteVoxelSignal(const char* density_path, int point_index, const char* output_path);

} // namespace kor
