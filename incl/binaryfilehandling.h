// Floor 2.1 - materials: binary data files (12-byte header, matrix rows, file copy)
//
// Layout, little-endian, no padding: three int32 (type, num1, num2), then the data. A density-matrix
// file has type 0, num1 = dimension n, num2 = number of matrices; each matrix is n rows of n elements,
// each element a real and an imaginary double. Files are read and written from front to back.
#pragma once

#include "matrixmathlib.h"

#include <cstdio>

namespace kor {

enum binfh_status {
    BINFH_OK = 0,          // done
    BINFH_ERR_NULLPTR = 1, // a required pointer is missing; nothing was read or written
    BINFH_ERR_IO = 2,      // a read, write or open failed; print_io_error has said which
    BINFH_ERR_BADARG = 3   // invalid argument
};
/// Status of the last call of ReadBinFileHeader, WriteBinFileHeader or read_legacy_bin_header.
extern binfh_status binfh_last_status;

/// Reads the header at the file's position. The outputs are written only when all three numbers were
/// read. A short read reports "fread(type)", "fread(num1)" or "fread(num2)".
binfh_status ReadBinFileHeader_status(std::FILE* file, int* type, int* num1, int* num2);
/// Writes the header at the file's position. A failed write reports "fwrite(type)", "fwrite(num1)" or
/// "fwrite(num2)".
binfh_status WriteBinFileHeader_status(std::FILE* file, int type, int num1, int num2);
/// The same two, the status going to binfh_last_status.
void ReadBinFileHeader(std::FILE* file, int* type, int* num1, int* num2);
void WriteBinFileHeader(std::FILE* file, const int* type, const int* num1, const int* num2);
/// 1 for a missing pointer, else 0; the outputs are 0 when the header could not be read.
int read_legacy_bin_header(std::FILE* file, int* type, int* num1, int* num2);

/// Reads or writes row `row` (from 1) of an n x n matrix, elements 1..n, at the file's position: 2n
/// doubles in one request. Returns 1; 0 for a missing file, n outside 1..257, a row outside 1..n or a
/// short transfer, without a message. A CMatrix holds indices up to 256 only: the last index of n = 257
/// is passed over in the file and not kept (reading) or written as 0.
int read_cmatrix_row(std::FILE* file, int n, CMatrix& matrix, int row);
int write_cmatrix_row(std::FILE* file, int n, const CMatrix& matrix, int row);
/// Reads rows 1..rows of `columns` elements each, both from 1 to 257, as read_cmatrix_row does.
/// 1, or 0 for a missing file, a number outside that range or a short read.
int read_matrix_rows(std::FILE* file, int columns, int rows, CMatrix& matrix);
/// Rows 1..n of an n x n matrix in order; 1, or 0 at the first row that fails or for n outside 1..257.
int read_cmatrix(std::FILE* file, int n, CMatrix& matrix);
int write_cmatrix(std::FILE* file, int n, const CMatrix& matrix);

/// Copies a file in chunks of 65536 bytes, replacing the target; onto itself it stays as it is. A failure
/// reports "fopen(src)", "fopen(dst)", "fwrite" or "fread" and leaves the target as far as it got.
binfh_status copy_file_binary(const char* src, const char* dst);
/// "context: system text of errno" on standard error; "I/O error" stands for a missing context.
void print_io_error(const char* context);

} // namespace kor
