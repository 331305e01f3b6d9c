// Memory that runs out for texts: the n-th BSTR that this thread allocates is refused while the object lives.
#pragma once

class CTextFault
{
  public:
    explicit CTextFault(int n);
    ~CTextFault();
    CTextFault(const CTextFault&) = delete;
    CTextFault& operator=(const CTextFault&) = delete;

    // Whether there were as many.
    bool Happened() const;
};
