const t = `first
it's "second
`;
