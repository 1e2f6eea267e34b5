// Floor 0.1 - ground: every capacity and constant of the simulator
#pragma once

namespace kor {

/// Spins of one system, numbered 1..KOR_MAX_SPINS.
inline constexpr int KOR_MAX_SPINS = 8;
/// Largest Hilbert dimension: eight spins 1/2.
inline constexpr int KOR_MAX_STATES = 256;
/// Sectors of one pulse sequence, numbered 1..KOR_MAX_SECTORS.
inline constexpr int KOR_MAX_SECTORS = 20;
/// Waveform samples of one sector, indexed 0..KOR_MAX_RF_POINTS-1.
inline constexpr int KOR_MAX_RF_POINTS = 8192;
/// Grid points on one gradient axis.
inline constexpr int KOR_MAX_GRID_POINTS = 256;
/// Spin pairs i < j of KOR_MAX_SPINS spins.
inline constexpr int KOR_MAX_PAIRS = 28;
/// Lines of one line list, columns 1..KOR_MAX_LINES.
inline constexpr int KOR_MAX_LINES = 256;
/// Parameters of the pulse optimiser.
inline constexpr int KOR_MAX_PARAMETERS = 160;
/// Largest dimension that the Hermitian eigensolver serves (its real embedding is 2n x 2n).
inline constexpr int KOR_MAX_EIGEN_STATES = 64;

/// Characters of a path buffer, a sector file name, a remark, a message and a model's short name
/// (each with its terminator).
inline constexpr int KOR_PATH_SIZE = 1024;
inline constexpr int KOR_FILE_NAME_SIZE = 256;
inline constexpr int KOR_REMARK_SIZE = 512;
inline constexpr int KOR_MESSAGE_SIZE = 512;
inline constexpr int KOR_SHORT_NAME_SIZE = 128;

/// pi to double precision; the same literal everywhere, so that results agree to the last digit.
inline constexpr double KOR_PI = 3.141592653589793;

} // namespace kor
