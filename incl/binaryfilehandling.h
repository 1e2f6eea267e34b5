// Floor 2.1 - materials: binary data files (12-byte header, matrix rows, file copy)
#pragma once

#include "matrixmathlib.h"

#include <cstdio>

namespace kor {

enum binfh_status { BINFH_OK = 0, BINFH_ERR_NULLPTR = 1, BINFH_ERR_IO = 2, BINFH_ERR_BADARG = 3 };
/// Status of the last call of ReadBinFileHeader or WriteBinFileHeader.
extern binfh_status binfh_last_status;

binfh_status ReadBinFileHeader_status(std::FILE* file, int* type, int* num1, int* num2);
binfh_status WriteBinFileHeader_status(std::FILE* file, int type, int num1, int num2);
void ReadBinFileHeader(std::FILE* file, int* type, int* num1, int* num2);
void WriteBinFileHeader(std::FILE* file, const int* type, const int* num1, const int* num2);
int read_legacy_bin_header(std::FILE* file, int* type, int* num1, int* num2);
int read_cmatrix_row(std::FILE* file, int n, CMatrix& matrix, int row);
int write_cmatrix_row(std::FILE* file, int n, const CMatrix& matrix, int row);
/// Rows 1..n in order; 1, or 0 at the first row that fails.
int read_cmatrix(std::FILE* file, int n, CMatrix& matrix);
int write_cmatrix(std::FILE* file, int n, const CMatrix& matrix);
binfh_status copy_file_binary(const char* src, const char* dst);
void print_io_error(const char* context);

} // namespace kor
