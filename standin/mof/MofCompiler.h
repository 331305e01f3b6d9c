// Carries the statements of a MOF text out on a repository's state.
#pragma once

#include "standin/mof/MofSyntax.h"
#include "standin/mof/MofValue.h"
#include "standin/mof/RepositoryState.h"

namespace standin
{
class CMofCompiler
{
  public:
    // Begins in the namespace root\cimv2, as the management service's own compiler does not: that one begins
    // in root\default, where nothing of ours belongs.
    explicit CMofCompiler(CRepositoryState& state) noexcept : m_state(state) {}

    // Throws CMofProblem; the state is then half done and to be dropped.
    void Run(const std::vector<CMofStatement>& statements);

  private:
    void Carry(const CMofClass& declaration);
    void Carry(const CMofInstance& instance);
    void Carry(const CMofPragma& pragma);
    void ChangeNamespace(const CMofPragma& pragma);
    void DeleteClass(const CMofPragma& pragma);
    void DeleteInstance(const CMofPragma& pragma);

    CNamespace& Current();
    ClassDefinition BaseOf(const CMofClass& declaration);
    void RebuildDerived(const CMofName& name);

    CRepositoryState& m_state;
    std::wstring m_namespace = L"root\\cimv2";
    CMofAliases m_aliases;
};
} // namespace standin
