#pragma once

#include <zip.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vantlo::test {

/// The parts of an archive, by name.
using Parts = std::vector<std::pair<std::string, std::string>>;

/// An archive that is written into memory; given up unless it is finished.
class ArchiveWriter {
public:
    ArchiveWriter() {
        zip_error_t error;
        zip_error_init(&error);
        target_ = zip_source_buffer_create(nullptr, 0, 0, &error);
        if (target_ != nullptr) archive_ = zip_open_from_source(target_, ZIP_TRUNCATE, &error);
        zip_error_fini(&error);
        require(archive_ != nullptr);
        zip_source_keep(target_);  // else it goes with the archive
    }
    ArchiveWriter(const ArchiveWriter&) = delete;
    ArchiveWriter& operator=(const ArchiveWriter&) = delete;
    ~ArchiveWriter() {
        if (archive_ != nullptr) zip_discard(archive_);
        zip_source_free(target_);
    }

    /// `content` must live until the archive is finished.
    void add(const std::string& name, const std::string& content, const char* password) {
        zip_source_t* const part = zip_source_buffer(archive_, content.data(), content.size(), 0);
        const zip_int64_t index = zip_file_add(archive_, name.c_str(), part, ZIP_FL_ENC_UTF_8);
        if (index < 0) zip_source_free(part);
        require(index >= 0);
        const auto entry = static_cast<zip_uint64_t>(index);
        zip_file_set_mtime(archive_, entry, 315'532'800, 0);  // 1980: the same bytes each time
        if (password != nullptr) require(zip_file_set_encryption(archive_, entry, ZIP_EM_AES_256, password) == 0);
    }

    std::string finish() {
        require(zip_close(archive_) == 0);
        archive_ = nullptr;
        require(zip_source_open(target_) == 0);
        std::string bytes;
        char buffer[4096];
        for (zip_int64_t read = 0; (read = zip_source_read(target_, buffer, sizeof buffer)) > 0;) {
            bytes.append(buffer, static_cast<std::size_t>(read));
        }
        zip_source_close(target_);
        return bytes;
    }

private:
    static void require(bool holds) {
        if (!holds) throw std::runtime_error("the archive cannot be made");
    }

    zip_source_t* target_ = nullptr;
    zip_t* archive_ = nullptr;
};

/// An archive in memory, its parts encrypted where a password is given.
/// Errors   std::runtime_error for names that no archive can have.
inline std::string archive_of(const Parts& parts, const char* password = nullptr) {
    ArchiveWriter writer;
    for (const auto& [name, content] : parts) writer.add(name, content, password);
    return writer.finish();
}

/// A sheet for workbook_of.
struct TestSheet {
    std::string name;
    std::string data;   ///< the rows, as XML
    std::string after;  ///< what follows them: merged cells
    std::string state;  ///< `hidden`, or empty
};

/// The parts of a workbook as spreadsheets write it. Styles: 0 general, 1 a date, 2 date and time, 3 Chinese date,
/// 4 red decimals, 5 percent.
inline Parts parts_of(const std::vector<TestSheet>& sheets, const std::string& shared_texts = {},
                      const std::string& properties = {}) {
    const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
    const std::string main = " xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"";
    const std::string office = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
    const std::string package = " xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"";
    const auto relation = [&](const std::string& id, const std::string& type, const std::string& target) {
        return "<Relationship Id=\"" + id + "\" Type=\"" + office + "/" + type + "\" Target=\"" + target + "\"/>";
    };
    std::string list,
        relations = relation("s", "styles", "styles.xml") + relation("t", "sharedStrings", "sharedStrings.xml");
    Parts parts = {{"[Content_Types].xml", head + "<Types/>"},
                   {"_rels/.rels", head + "<Relationships" + package + ">" +
                                       relation("w", "officeDocument", "xl/workbook.xml") + "</Relationships>"}};
    for (std::size_t number = 1; number <= sheets.size(); ++number) {
        const TestSheet& sheet = sheets[number - 1];
        const std::string id = "r" + std::to_string(number),
                          part = "worksheets/sheet" + std::to_string(number) + ".xml";
        list += "<sheet name=\"" + sheet.name + "\" sheetId=\"" + std::to_string(number) + "\"" +
                (sheet.state.empty() ? "" : " state=\"" + sheet.state + "\"") + " r:id=\"" + id + "\"/>";
        relations += relation(id, "worksheet", part);
        parts.emplace_back("xl/" + part, head + "<worksheet" + main + "><sheetData>" + sheet.data + "</sheetData>" +
                                             sheet.after + "</worksheet>");
    }
    parts.emplace_back("xl/workbook.xml", head + "<workbook" + main + " xmlns:r=\"" + office + "\"><workbookPr" +
                                              properties + "/><sheets>" + list + "</sheets></workbook>");
    parts.emplace_back("xl/_rels/workbook.xml.rels",
                       head + "<Relationships" + package + ">" + relations + "</Relationships>");
    parts.emplace_back("xl/sharedStrings.xml", head + "<sst" + main + ">" + shared_texts + "</sst>");
    parts.emplace_back(
        "xl/styles.xml",
        head + "<styleSheet" + main +
            "><numFmts><numFmt numFmtId=\"164\" formatCode=\"yyyy&quot;年&quot;m&quot;月&quot;d&quot;日&quot;;@\"/>" +
            "<numFmt numFmtId=\"165\" formatCode=\"[Red]0.00\"/></numFmts><cellStyleXfs><xf "
            "numFmtId=\"14\"/></cellStyleXfs><cellXfs>" +
            "<xf numFmtId=\"0\"/><xf numFmtId=\"14\"/><xf numFmtId=\"22\"/><xf numFmtId=\"164\"/><xf "
            "numFmtId=\"165\"/>" +
            "<xf numFmtId=\"9\"/></cellXfs></styleSheet>");
    return parts;
}

inline std::string workbook_of(const std::vector<TestSheet>& sheets, const std::string& shared_texts = {},
                               const std::string& properties = {}) {
    return archive_of(parts_of(sheets, shared_texts, properties));
}

}  // namespace vantlo::test
