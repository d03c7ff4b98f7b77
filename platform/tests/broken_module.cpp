// Links, since a module may leave names open, and can never be loaded.
extern "C" int SqNobodyDefinesThis();
extern "C" int SqTestAnswer() { return SqNobodyDefinesThis(); }
