import { Component, Suspense, useState } from 'react';
import { createRoot } from 'react-dom/client';
import address from 'qelrcpt/qelrcpt.wasm';
import 'qelrcpt/receipt.css';

import { Receipt } from './Receipt.jsx';

const record = {
  merch_name: 'Tillerbird Bakery',
  merch_addr1: '418 Juniper Street',
  action: 'sale',
  u_cardclass: 'credit',
  amount: 12.34,
  code: 'AUTH',
  timestamp: 1773502867,
  line_items: [{ name: 'Cortado', qty: 1, price: 4.25 }, { name: 'Sourdough', qty: 2, price: 8.09 }],
};
const source = new URL(address, import.meta.url);

// A record that cannot be rendered says what is wrong with it.
class Faults extends Component {
  state = {};
  static getDerivedStateFromError(fault) {
    return { fault };
  }
  render() {
    return this.state.fault ? <p role="alert">{this.state.fault.message}</p> : this.props.children;
  }
}

function Page() {
  const [language, setLanguage] = useState('en');
  const [options, setOptions] = useState({ language });
  const choose = ({ target }) => {
    setLanguage(target.value);
    setOptions({ language: target.value });
  };
  return (
    <Faults>
      <select aria-label="Language" value={language} onChange={choose}>
        {['en', 'fr', 'es', 'de', 'it'].map((code) => (
          <option key={code}>{code}</option>
        ))}
      </select>
      <Suspense fallback="…">
        <Receipt record={record} options={options} source={source} />
      </Suspense>
    </Faults>
  );
}

createRoot(document.getElementById('page')).render(<Page />);
