// The loop that the three loaders share: a file's keys as a table, one row per key.
//
// Reader is the loader's own record, derived from ModelFileReader. A row's function reads the value of a
// line with its key; it reports its own errors through line_error. Holds no key of any file.
#pragma once

#include "kormodel/text_lines.h"
#include "korplatform.h"

namespace kor {

template <class Reader> struct KeyRow {
    const char* key;
    KORModelStatus (*read)(Reader& reader, const char* key, const char* value);
    const char* needed = nullptr; // key that must stand in an earlier line
    bool repeatable = false;      // the function itself says which repetitions are errors
};

/// Free text that loading does not use.
template <class Reader> KORModelStatus ignore_text(Reader&, const char*, const char*) {
    return KOR_MODEL_OK;
}

template <class Reader> KORModelStatus read_version(Reader& reader, const char*, const char* value) {
    return read_format_version(reader, value);
}

/// Reads one line with the row that its key selects. A second occurrence of a key is refused before its
/// value is looked at.
template <class Reader, std::size_t rows>
KORModelStatus read_key_line(Reader& reader, const KeyRow<Reader> (&table)[rows], const char* unknown_key,
                             const char* text) {
    static_assert(rows <= sizeof(ModelFileReader::given) / sizeof(const char*));
    for (const KeyRow<Reader>& row : table) {
        const char* value = match_key(text, row.key);
        if (!value)
            continue;
        const bool seen = is_given(reader, row.key);
        if (seen && !row.repeatable)
            return line_error(reader, "duplicate key '%s'", row.key);
        if (row.needed && !is_given(reader, row.needed))
            return line_error(reader, "key '%s' must appear before '%s'", row.needed, row.key);
        if (!seen)
            reader.given[reader.given_count++] = row.key;
        return row.read(reader, row.key, value);
    }
    return line_error(reader, "%s", unknown_key);
}

/// Reads the lines of an open file up to its end or the first error, and closes the file.
/// read_line(text) handles one non-empty line.
template <class ReadLine>
KORModelStatus read_key_lines(std::FILE* file, const char* filename, ModelFileReader& reader,
                              ReadLine read_line) {
    char line[KOR_LINE_SIZE];
    char* text = nullptr;
    KORModelStatus status = KOR_MODEL_OK;
    ModelLine met = ModelLine::text;
    while (status == KOR_MODEL_OK && met == ModelLine::text) {
        met = read_model_line(file, line, &text, &reader.line_number);
        if (met == ModelLine::zero_byte)
            status = line_error(reader, "holds a zero byte: no text file");
        else if (met == ModelLine::text && *text != '\0')
            status = read_line(text);
    }
    const bool read_failed = std::ferror(file) != 0;
    const bool close_failed = std::fclose(file) != 0;
    if (status == KOR_MODEL_OK && (read_failed || close_failed)) {
        set_error(reader.errbuf, reader.errbufsz, "failed while closing '%s'", filename);
        status = KOR_MODEL_ERR_IO;
    }
    return status;
}

} // namespace kor
