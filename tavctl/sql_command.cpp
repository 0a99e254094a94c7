// SPDX-License-Identifier: Apache-2.0
#include <tavctl/sql_command.h>

#include <algorithm>
#include <memory>
#include <vector>

#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/data_query.h>
#include <tavctl/options.h>

namespace tav::ctl {

namespace {

constexpr unsigned int kWrite = 1;  // bit of the request's options

// The columns of a result. A name that comes again gets its place behind it, so that each has one of its own.
class cResultColumns {
 public:
  explicit cResultColumns(const vorn::cRecord& result) {
    for (vorn::cRecordPar par = result.GetPar(db_ctrl::kColumn); par.IsValid(); par = par.NextSame()) {
      std::string name = par.GetText();
      if (std::find(m_names.begin(), m_names.end(), name) != m_names.end())
        name += "#" + std::to_string(m_names.size() + 1);
      m_names.push_back(name);
    }
    for (const std::string& name : m_names) m_columns.push_back({name, name});
  }
  cResultColumns(const cResultColumns&) = delete;
  cResultColumns& operator=(const cResultColumns&) = delete;

  Columns Get() const { return m_columns; }
  // The row under these names.
  vorn::cRecord Named(const vorn::cRecord& row) const {
    vorn::cRecord named;
    vorn::cRecordPar cell = row.First();
    for (const std::string& name : m_names) {
      Append(named, name, cell);
      cell = cell.Next();
    }
    return named;
  }

 private:
  static void Append(vorn::cRecord& to, const std::string& name, const vorn::cRecordPar& cell) {
    if (cell.IsInt())
      to.AppendIntPar(name, cell.GetInt());
    else if (cell.IsUInt64())
      to.AppendUInt64Par(name, cell.GetUInt64());
    else if (cell.IsData())
      to.AppendDataPar(name, cell.GetData());
    else if (cell.HasText())
      to.AppendTextPar(name, cell.GetBytesView());
    else
      to.AppendTextPar(name, nullptr);
  }

  std::vector<std::string> m_names;
  std::vector<cColumn> m_columns;
};

}  // namespace

void cSqlCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "STATEMENT", m_statement, "One statement, such as \"SELECT * FROM last_values\"", eNeed::Required);
  AddNumber(app, "--limit", m_limit, "At most so many rows, 0: all that the service gives (default 1000)");
  AddFlag(app, "--write", m_write, "The statement may change the database; the service's own user and root only");
}

eExit cSqlCommand::Run(cContext& context) {
  cDataQuery data(context);
  std::unique_ptr<cResultColumns> columns;
  std::unique_ptr<cRowWriter> rows;
  std::uint64_t changes = 0;
  const auto outcome = data.Execute(
      m_statement, m_write ? kWrite : 0, m_limit,
      [&](const vorn::cRecord& result) {
        columns = std::make_unique<cResultColumns>(result);
        rows = context.Rows(columns->Get());
        changes = result.GetUInt64Par(db_ctrl::kChanges);
      },
      [&](const vorn::cRecord& row) { rows->Write(columns->Named(row)); });
  rows->End();
  if (m_write) context.Note(std::to_string(changes) + " row(s) changed");
  if (outcome.more) context.Note("there are more rows; --limit 0 lists all");
  return eExitDone;
}

}  // namespace tav::ctl
